// A preview as text.
#pragma once

#include <string>

#include "companion/bounded_output.h"
#include "companion/styles.h"
#include "engine/sort_preview.h"

// Prints a line for each entry that a sort would move and for the folders above it, or with `all` for every entry, in
// the order after the sort. A moved entry has an arrow up or down before it, and after it its places before and after
// the sort, from 1. A bookmark without a title has its address. Of a title of more than 300 units only the first 300
// are printed, and "…". Prints nothing if the tree is in order and `all` is false.
void printPreviewText(SortPreview& preview, const PlistValue& root, bool all, const Styles& styles,
                      BoundedOutput& output);

// Returns the number of moved entries that printPreviewText() met, in one line. `subject` is the beginning of the
// sentence that says that nothing moves: "Your Safari bookmarks are".
std::string previewSummary(const SortPreview& preview, const std::string& subject);
