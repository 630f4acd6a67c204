// Rewrites an XML property list: copies the file and changes the order of arrays.
#pragma once

#include <optional>

#include "values/bytes.h"
#include "values/plist_value.h"

// Returns the text that `value` was parsed from, with the elements of rearranged arrays in their new order. The bytes
// of each element and of everything between elements stay the same. Absent if `value` is not the root of an XML file,
// if it differs from that in more than the order of arrays of dictionaries, or if the file has another encoding.
std::optional<Bytes> rewriteXml(const PlistValue& value);
