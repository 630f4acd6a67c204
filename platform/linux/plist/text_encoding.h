// The encoding of a property list in a text format.
#pragma once

#include "values/bytes.h"

// `bytes` as UTF-8 without a byte-order mark: as they are where that is what they are, else converted from the
// encoding that a byte-order mark (UTF-8, UTF-16, UTF-32) or an XML declaration names. Bytes that are taken for UTF-8
// are not checked. Throws Error for an encoding that is unknown and for bytes that are not in it.
Bytes toUtf8(const Bytes& bytes);
