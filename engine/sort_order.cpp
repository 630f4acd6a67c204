#include "engine/sort_order.h"

#include <algorithm>
#include <cstdint>
#include <unordered_map>
#include <utility>
#include <vector>

#include "engine/bookmark_node.h"
#include "engine/title_comparison.h"
#include "platform/platform.h"

namespace {

// The order: folders before bookmarks, each group by title. The sort is stable, so equal titles keep their order.
bool goesBefore(const SortableEntry& a, const SortableEntry& b, const TitleComparison& titles) {
  if (a.folder != b.folder) return a.folder;
  return titles.isBefore(a, b);
}

bool sortable(const NodeFields& fields) {
  return fields.type != NodeType::other && !fields.title.startsWith(bookmark::reservedPrefix);
}

// Finds the fields of all children before any title is read: meanwhile the processor fetches the titles, which are all
// over the file.
std::vector<NodeFields> fieldsOfEach(const PlistValue& children) {
  std::vector<NodeFields> fields;
  fields.reserve(children.size());
  for (std::size_t index = 0; index < children.size(); ++index) {
    const NodeFields& child = fields.emplace_back(fieldsOf(children.at(index)));
    __builtin_prefetch(child.title.start());
  }
  return fields;
}

std::vector<std::size_t> offsetsOf(const std::vector<SortableEntry>& entries) {
  std::vector<std::size_t> offsets;
  offsets.reserve(entries.size());
  for (const SortableEntry& entry : entries) offsets.push_back(entry.offset);
  return offsets;
}

class Sorter {
 public:
  // For a tree, which exists as long as this object.
  Sorter(const Collation& collation, const PlistValue& tree, ChangeListener listener)
      : tree_(tree), titles_(collation, tree), listener_(std::move(listener)) {}

  PlistValue sorted(bool root) { return sorted(tree_, fieldsOf(tree_), root); }

 private:
  PlistValue sorted(const PlistValue& node, const NodeFields& fields, bool root) {
    if (fields.children == PlistValue::absent || fields.title == bookmark::readingListTitle) return node;
    return remembered(node, [&] { return withSortedChildren(node, fields, root); });
  }

  // A node that several folders share is sorted once and stays one node. The same holds for a list of entries that
  // several nodes share.
  template <class Sort>
  PlistValue remembered(const PlistValue& original, const Sort& sort) {
    if (!original.mayBeShared()) return sort();
    if (const auto done = done_.find(original.identity()); done != done_.end()) return done->second.second;
    PlistValue result = sort();
    done_.emplace(original.identity(), std::pair(original, result));
    return result;
  }

  PlistValue withSortedChildren(const PlistValue& node, const NodeFields& fields, bool root) {
    const std::optional<PlistValue> children = lists_.of(node);
    if (!children) return node;
    PlistValue inOrder = remembered(*children, [&] { return sortedList(*children, root); });
    if (inOrder.identity() == children->identity()) return node;
    return node.replacing(fields.children, std::move(inOrder));
  }

  PlistValue sortedList(const PlistValue& list, bool root) {
    bool changed = false;
    std::vector<PlistValue> elements;
    std::vector<SortableEntry> entries;
    elements.reserve(list.size());
    entries.reserve(root ? 0 : list.size());
    const std::vector<NodeFields> fieldsOfAll = fieldsOfEach(list);
    for (std::size_t index = 0; index < list.size(); ++index) {
      PlistValue& element = elements.emplace_back(list.at(index));
      const NodeFields& child = fieldsOfAll[index];
      if (!root && sortable(child))
        entries.push_back({child.title, static_cast<std::uint32_t>(index), 0, child.type == NodeType::list});
      if (child.children == PlistValue::absent) continue;
      PlistValue inOrder = sorted(element, child, false);
      if (inOrder.identity() == element.identity()) continue;
      element = std::move(inOrder);
      changed = true;
    }
    FolderOrder order;
    changed |= reorder(elements, entries, order);
    if (!changed) return list;
    if (listener_) listener_(list, order);
    return list.rearranged(std::move(elements));
  }

  // Sorts the elements that `entries` name among the places that they have. Returns true if any moved, and then sets
  // `order` for the listener.
  bool reorder(std::vector<PlistValue>& elements, std::vector<SortableEntry>& entries, FolderOrder& order) {
    titles_.prepare(entries);
    const auto before = [this](const SortableEntry& a, const SortableEntry& b) { return goesBefore(a, b, titles_); };
    if (std::is_sorted(entries.begin(), entries.end(), before)) return false;
    std::vector<SortableEntry> inOrder = entries;
    std::stable_sort(inOrder.begin(), inOrder.end(), before);
    std::vector<PlistValue> moved;
    moved.reserve(entries.size());
    for (const SortableEntry& entry : inOrder) moved.push_back(std::move(elements[entry.offset]));
    for (std::size_t place = 0; place < entries.size(); ++place)
      elements[entries[place].offset] = std::move(moved[place]);
    if (listener_) order = {offsetsOf(entries), offsetsOf(inOrder)};
    return true;
  }

  const PlistValue& tree_;
  TitleComparison titles_;
  ChangeListener listener_;
  EntryLists lists_;
  // The result of each shared node or list. The original is kept too, so that no other gets its identity.
  std::unordered_map<PlistValue::Identity, std::pair<PlistValue, PlistValue>> done_;
};

}  // namespace

bool sortable(const PlistValue& child) { return sortable(fieldsOf(child)); }

PlistValue sorted(const PlistValue& node, bool root) { return Sorter(platform().collation, node, {}).sorted(root); }

void reportChanges(const PlistValue& node, bool root, const ChangeListener& listener) {
  Sorter(platform().collation, node, listener).sorted(root);
}
