// A preview for programs.
#pragma once

#include <string>

#include "engine/sort_preview.h"

// One object: "file", "isInOrder", "children", and of these "moved" and "folders", the numbers of moved entries and of
// folders that have some. "children" lists every entry of a folder in the order after the sort, each with "title",
// "kind" ("folder", "bookmark" or "other"), its place now as "from", counted from 0, and whether it is "moved"; those
// that change inside, or with `all` every folder, have "children" too. Whoever puts the entries of each such folder
// into this order has what a sort would make of the tree. ASCII only; an unpaired surrogate becomes U+FFFD.
std::string previewJson(SortPreview& preview, const PlistValue& root, bool all, const std::string& file);
