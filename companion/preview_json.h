// A preview as JSON.
#pragma once

#include <string>

#include "companion/bounded_output.h"
#include "engine/sort_preview.h"

// Prints one JSON object: "file", "isInOrder", "children", and the totals "moved" and "folders" (moved entries, and
// folders that contain them). "children" lists all entries of a folder in the order after the sort, each with "title",
// "kind" ("folder", "bookmark" or "other"), "address" (only of a bookmark without a title), "from" (its place before
// the sort, from 0) and "moved". Folders that change inside have "children" too; with `all`, every folder has.
// Reordering each listed folder by "from" gives the sorted tree. The text is ASCII; an unpaired surrogate becomes
// U+FFFD.
void printPreviewJson(SortPreview& preview, const PlistValue& root, bool all, const std::string& file,
                      BoundedOutput& output);
