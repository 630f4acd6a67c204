// What a sort would change in a bookmark tree, entry by entry.
#pragma once

#include <cstddef>
#include <functional>
#include <unordered_map>
#include <vector>

#include "engine/bookmark_node.h"
#include "values/plist_value.h"

// An entry of a folder after a sort. Places are indices among all entries of the folder, from 0.
struct PreviewEntry {
  PlistValue node;     // before the sort
  std::size_t from;    // its place before the sort
  std::size_t to;      // its place after the sort
  bool isMoved;        // see fewestMoves()
  bool changesInside;  // the sort changes something below it
};

// Sorts a tree as the sort job does and keeps the changes of each folder. A node that several folders share is sorted
// once, but forEachEntry() visits it in each of them.
class SortPreview {
 public:
  // `root` is the root of a bookmark file. `entriesAtMost` limits how many entries are visited in all, because nested
  // shared folders can make a small hostile file into an endless list. Throws SorterError::previewHasTooManyLines if
  // the folders that change have more entries.
  SortPreview(const PlistValue& root, std::size_t entriesAtMost);

  bool isInOrder() const { return changes_.empty(); }

  // Returns true if a sort changes anything in a folder or below it.
  bool changes(const PlistValue& folder) const { return changeOf(folder) != nullptr; }

  // Returns true if forEachEntry() has a list to go through, though it may be empty.
  bool hasEntries(const PlistValue& folder) { return lists_.of(folder).has_value(); }

  // Calls `visit` for each entry of a folder, in the order after the sort. No-op for a node without valid children.
  // Throws SorterError::previewHasTooManyLines once all calls together exceed the limit.
  void forEachEntry(const PlistValue& folder, const std::function<void(const PreviewEntry&)>& visit);

  // The number of moved entries visited so far, and of the folders that contain them.
  std::size_t movedEntries() const { return movedEntries_; }
  std::size_t foldersWithMoves() const { return foldersWithMoves_; }

 private:
  // For each place after the sort: the place before it, and whether the entry is moved. Empty if no entry moves.
  struct Change {
    std::vector<std::size_t> from;
    std::vector<bool> moved;
  };

  const Change* changeOf(const PlistValue& folder) const;

  std::unordered_map<PlistValue::Identity, Change> changes_;  // by the list of entries
  EntryLists lists_;
  std::size_t entriesLeft_;
  std::size_t movedEntries_ = 0;
  std::size_t foldersWithMoves_ = 0;
};
