// What a sort would do to a bookmark tree, entry by entry, without doing it.
#pragma once

#include <cstddef>
#include <functional>
#include <unordered_map>
#include <vector>

#include "values/plist_value.h"

// An entry of a folder as a sort would leave it. Places are among all entries of the folder, counted from 0.
struct PreviewEntry {
  PlistValue node;     // as it is now
  std::size_t from;    // its place now
  std::size_t to;      // its place after a sort
  bool isMoved;        // it has to be taken out and put in elsewhere; see fewestMoves()
  bool changesInside;  // the sort moves something below it
};

// Sorts a tree as the sort job does and remembers what became of each folder. A node that several folders hold is
// looked at once; a walk over the entries meets it wherever it is.
class SortPreview {
 public:
  // `root` is the top of a bookmark file. A walk meets at most `entriesAtMost` entries, because nested folders that
  // hold the same ones again and again could make a small file into a list without end; a file that is not made like
  // that lists fewer entries than it has bytes.
  SortPreview(const PlistValue& root, std::size_t entriesAtMost);

  bool isInOrder() const { return changes_.empty(); }

  // Whether a sort changes anything in a folder or below it.
  bool changes(const PlistValue& folder) const { return changes_.contains(folder.identity()); }

  // Calls `visit` for each entry of a folder, in the order after a sort; for none if it is no folder that can be
  // walked. Throws Error once all calls together have met too many.
  void forEachEntry(const PlistValue& folder, const std::function<void(const PreviewEntry&)>& visit);

  // Of the entries met so far: how many are moved, and in how many folders.
  std::size_t movedEntries() const { return movedEntries_; }
  std::size_t foldersWithMoves() const { return foldersWithMoves_; }

 private:
  // Of the entry at each place after a sort: where it is from, and whether it is moved. Empty where all entries stay.
  struct Change {
    std::vector<std::size_t> from;
    std::vector<bool> moved;
  };

  std::unordered_map<PlistValue::Identity, Change> changes_;
  std::size_t entriesLeft_;
  std::size_t movedEntries_ = 0;
  std::size_t foldersWithMoves_ = 0;
};
