// Checks a rewritten file against the file that it was made from.
#pragma once

#include "values/byte_pieces.h"
#include "values/plist_value.h"

// Returns true if `bytes` are the file that `value` was parsed from, with its arrays in the order of `value`; parsing
// them then gives `value`. Takes time linear in the size of the file, and no memory for another tree. Returns false if
// they are anything else, even if they are another file with the same value.
bool isRearrangedSource(const BytePieces& bytes, const PlistValue& value);
