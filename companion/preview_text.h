// A preview as text.
#pragma once

#include <string>

#include "companion/styles.h"
#include "engine/sort_preview.h"

// Returns a line for each entry that a sort would move and for the folders above it, or with `all` for every entry, in
// the order after the sort. A moved entry has an arrow up or down before it, and after it its places before and after
// the sort, from 1. Returns "" if the tree is in order and `all` is false.
std::string previewText(SortPreview& preview, const PlistValue& root, bool all, const Styles& styles);

// Returns the number of moved entries that previewText() met, in one line.
std::string previewSummary(const SortPreview& preview);
