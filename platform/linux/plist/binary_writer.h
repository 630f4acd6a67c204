// Writes the binary format.
#pragma once

#include "values/bytes.h"
#include "values/plist_value.h"

// `value` as a binary property list. Where it is a parsed binary file of which only arrays changed their order, that
// file with just those references rewritten: every object stays where it is, to the byte. Otherwise a new file, in
// which equal strings, numbers, dates and data are written once, and so is every container, however often it is
// referred to. Throws Error if the file would be 4 GiB or more.
Bytes writeBinary(const PlistValue& value);
