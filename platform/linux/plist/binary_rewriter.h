// Rewrites a binary property list in place of writing it anew.
#pragma once

#include <optional>

#include "values/bytes.h"
#include "values/plist_value.h"

// The file that `value` was parsed from, with the references of its rearranged arrays changed and nothing else;
// absent where `value` is not a binary file's top object, or differs from it in more than the order of arrays, or
// where a changed object is one that the file refers to from several places.
std::optional<Bytes> rewriteBinary(const PlistValue& value);
