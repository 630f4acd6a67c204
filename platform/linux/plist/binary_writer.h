// Writes the binary property-list format.
#pragma once

#include "values/byte_pieces.h"
#include "values/plist_value.h"

// Returns `value` as a binary property list. If `value` is a parsed binary file in which only arrays changed their
// order, the result is a copy of that file in which only the references of these arrays differ. Otherwise it is a new
// file that has equal strings, numbers, dates and data once, and a shared container once. Throws Error if the file
// would be 4 GiB or larger.
BytePieces writeBinary(const PlistValue& value);
