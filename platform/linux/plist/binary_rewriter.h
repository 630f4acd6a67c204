// Rewrites a binary property list: changes the order of arrays.
#pragma once

#include <optional>

#include "values/byte_pieces.h"
#include "values/plist_value.h"

// Returns the file that `value` was parsed from, with changed references in the rearranged arrays. The rest is pieces
// of that file. Absent if `value` is not the top object of a binary file, if it differs from that in more than the
// order of arrays, if the file refers to a changed object from several places, or if objects overlap.
std::optional<BytePieces> rewriteBinary(const PlistValue& value);
