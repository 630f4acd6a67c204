// Rewrites an XML property list in place of writing it anew.
#pragma once

#include <optional>

#include "values/bytes.h"
#include "values/plist_value.h"

// The text that `value` was parsed from, with the elements of its rearranged arrays in their new order, each as it was
// to the byte, and with everything else, white space and comments too, where it was. Absent where `value` is not an
// XML file's root, or differs from it in more than the order of arrays of dictionaries, or where the file's bytes were
// not this text (in another encoding).
std::optional<Bytes> rewriteXml(const PlistValue& value);
