// The sort order: in every folder the sub-folders first, then the bookmarks, each group by title as the user's file
// manager orders names. This is the whole ordering rule of the program.
#pragma once

#include "engine/plist_value.h"

// Whether a child takes part in its folder's order: a folder or a bookmark whose title does not begin with
// "com.apple.". Every other child keeps its exact place.
bool sortable(const PlistValue& child);

// `node` with every folder below it in order. With `root` true its own children keep their order and only their
// contents are sorted. The Reading List is left whole, at any depth. Whatever does not move shares the storage
// of `node`, so a node that is in order already is returned as it is.
PlistValue sorted(const PlistValue& node, bool root);
