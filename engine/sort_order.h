// The sort order: in every folder the sub-folders first, then the bookmarks, each group by title as the user's file
// manager orders names. This is the whole ordering rule of the program.
#pragma once

#include <cstddef>
#include <functional>
#include <vector>

#include "values/plist_value.h"

// Whether a child takes part in its folder's order: a folder or a bookmark whose title does not begin with
// "com.apple.". Every other child keeps its exact place.
bool sortable(const PlistValue& child);

// What a sort does to the entries of one folder: `places`, ascending, are the places that the sortable ones have among
// all entries, and the one that goes to places[k] is at from[k] before. Both are empty where these stay as they are.
struct FolderOrder {
  std::vector<std::size_t> places;
  std::vector<std::size_t> from;
};

// `node` with every folder below it in order. With `root` true its own children keep their order and only their
// contents are sorted. The Reading List is left whole, at any depth. Whatever does not move shares the storage
// of `node`, so a node that is in order already is returned as it is.
PlistValue sorted(const PlistValue& node, bool root);

// Told, while a sort goes on, of every node that it changes: once, as the node was, after those below it. The order is
// empty where only something below the node changes.
using ChangeListener = std::function<void(const PlistValue& node, const FolderOrder& order)>;

// Tells of all that sorted(node, root) changes.
void tellChanges(const PlistValue& node, bool root, const ChangeListener& listener);
