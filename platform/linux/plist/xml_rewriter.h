// Rewrites an XML property list: changes the order of arrays.
#pragma once

#include <optional>

#include "values/byte_pieces.h"
#include "values/plist_value.h"

// Returns the text that `value` was parsed from, with the elements of rearranged arrays in their new order, as pieces
// of that text. Absent if `value` is not the root of an XML file, if it differs from that in more than the order of
// arrays of dictionaries, or if the file has another encoding.
std::optional<BytePieces> rewriteXml(const PlistValue& value);
