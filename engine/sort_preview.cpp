#include "engine/sort_preview.h"

#include <optional>
#include <utility>

#include "engine/bookmark_node.h"
#include "engine/fewest_moves.h"
#include "engine/sort_order.h"
#include "engine/sorter_error.h"

SortPreview::SortPreview(const PlistValue& root, std::size_t entriesAtMost) : entriesLeft_(entriesAtMost) {
  reportChanges(root, true, [this](const PlistValue& node, const FolderOrder& order) {
    Change& change = changes_[node.identity()];
    if (order.places.empty()) return;
    const std::size_t count = childrenOf(node)->size();
    for (std::size_t place = 0; place < count; ++place) change.from.push_back(place);
    change.moved.resize(count, false);
    const std::vector<bool> moved = fewestMoves(order);
    for (std::size_t index = 0; index < order.places.size(); ++index) {
      change.from[order.places[index]] = order.from[index];
      change.moved[order.places[index]] = moved[index];
    }
  });
}

void SortPreview::forEachEntry(const PlistValue& folder, const std::function<void(const PreviewEntry&)>& visit) {
  const std::optional<PlistValue> children = childrenOf(folder);
  if (!children) return;
  const auto found = changes_.find(folder.identity());
  const Change* change = found != changes_.end() && !found->second.from.empty() ? &found->second : nullptr;
  if (change) ++foldersWithMoves_;
  for (std::size_t place = 0; place < children->size(); ++place) {
    if (entriesLeft_ == 0)
      throw sorterError(SorterError::previewHasTooManyLines,
                        "The bookmark file refers to the same folders so often that a preview of it would not end.");
    --entriesLeft_;
    const std::size_t from = change ? change->from[place] : place;
    const bool isMoved = change && change->moved[place];
    if (isMoved) ++movedEntries_;
    PlistValue node = children->at(from);
    const bool changesInside = changes(node);
    visit({std::move(node), from, place, isMoved, changesInside});
  }
}
