// Converts text formats of property lists to UTF-8.
#pragma once

#include "values/bytes.h"

// Returns `bytes` as UTF-8 without a byte-order mark, converted if a byte-order mark (UTF-8, UTF-16, UTF-32) or an XML
// declaration names another encoding. Does not check UTF-8, which needs no conversion. Throws Error for an unknown
// encoding and for bytes that are malformed in the named encoding.
Bytes toUtf8(const Bytes& bytes);
