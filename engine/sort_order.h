// The sort order: in every folder the sub-folders first, then the bookmarks, each group by title in the order of the
// user's file manager.
#pragma once

#include <cstddef>
#include <functional>
#include <vector>

#include "values/plist_value.h"

// True if a child takes part in its folder's order: a folder or a bookmark whose title does not begin with
// "com.apple.". Every other child keeps its index.
bool sortable(const PlistValue& child);

// How a sort rearranges one folder. `places`, ascending, are the indices of the sortable entries; the entry that a sort
// puts at places[k] is at from[k] before. Both are empty if no entry moves.
struct FolderOrder {
  std::vector<std::size_t> places;
  std::vector<std::size_t> from;
};

// Returns `node` with every folder below it in order. With `root` true its own children keep their order and only their
// contents are sorted. The Reading List is left unchanged at any depth. The result shares storage with `node` wherever
// nothing moves; a node that is in order is returned as it is.
PlistValue sorted(const PlistValue& node, bool root);

// Called once per changed list of entries, inner lists first, with the list as it was before the sort. Several folders
// may share a list. The order is empty if only something below the list's entries changes.
using ChangeListener = std::function<void(const PlistValue& list, const FolderOrder& order)>;

// Calls `listener` with everything that sorted(node, root) would change.
void reportChanges(const PlistValue& node, bool root, const ChangeListener& listener);
