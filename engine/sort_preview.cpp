#include "engine/sort_preview.h"

#include <numeric>
#include <optional>
#include <utility>

#include "engine/fewest_moves.h"
#include "engine/sort_order.h"
#include "engine/sorter_error.h"

namespace {

Error tooManyEntries() {
  return sorterError(SorterError::previewHasTooManyLines,
                     "The bookmark file refers to the same folders so often that a preview of it would not end.");
}

}  // namespace

SortPreview::SortPreview(const PlistValue& root, std::size_t entriesAtMost) : entriesLeft_(entriesAtMost) {
  std::size_t entries = 0;
  reportChanges(root, true, [&](const PlistValue& list, const FolderOrder& order) {
    entries += list.size();
    if (entries > entriesAtMost) throw tooManyEntries();
    Change& change = changes_[list.identity()];
    if (order.places.empty()) return;
    change.from.resize(list.size());
    std::iota(change.from.begin(), change.from.end(), std::size_t{0});
    change.moved.resize(list.size(), false);
    const std::vector<bool> moved = fewestMoves(order);
    for (std::size_t index = 0; index < order.places.size(); ++index) {
      change.from[order.places[index]] = order.from[index];
      change.moved[order.places[index]] = moved[index];
    }
  });
}

// The Reading List has no changes, even if it shares its list with a folder that is sorted.
const SortPreview::Change* SortPreview::changeOf(const PlistValue& folder) const {
  const NodeFields fields = fieldsOf(folder);
  if (fields.children == PlistValue::absent || fields.title == bookmark::readingListTitle) return nullptr;
  const auto found = changes_.find(folder.valueAt(fields.children).identity());
  return found != changes_.end() ? &found->second : nullptr;
}

void SortPreview::forEachEntry(const PlistValue& folder, const std::function<void(const PreviewEntry&)>& visit) {
  const std::optional<PlistValue> children = lists_.of(folder);
  if (!children) return;
  const Change* change = changeOf(folder);
  if (change && change->from.empty()) change = nullptr;
  if (change) ++foldersWithMoves_;
  for (std::size_t place = 0; place < children->size(); ++place) {
    if (entriesLeft_ == 0) throw tooManyEntries();
    --entriesLeft_;
    const std::size_t from = change ? change->from[place] : place;
    const bool isMoved = change && change->moved[place];
    if (isMoved) ++movedEntries_;
    PlistValue node = children->at(from);
    const bool changesInside = changes(node);
    visit({std::move(node), from, place, isMoved, changesInside});
  }
}
