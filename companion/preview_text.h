// A preview for people.
#pragma once

#include <string>

#include "companion/styles.h"
#include "engine/sort_preview.h"

// A line for each entry that a sort would move and for the folders on the way to it, or with `all` for every entry,
// in the order after the sort. A moved entry has an arrow in front, up or down as it goes, and behind it its place
// among the folder's entries now and then, counted from 1. Empty if there is nothing to show.
std::string previewText(SortPreview& preview, const PlistValue& root, bool all, const Styles& styles);

// How much was found to be moved by then, in one line.
std::string previewSummary(const SortPreview& preview);
