// Reads the binary property-list format.
#pragma once

#include "values/bytes.h"
#include "values/plist_value.h"

// Returns true if bytes begin like a file of this format. The header is "bplist0" and one more character.
bool looksBinary(const Bytes& bytes);

// Returns the value in `bytes`. The value refers to the bytes and keeps them alive. Time and memory are linear in the
// size of the file, however often its objects refer to each other. Throws Error with the byte of the fault for a
// damaged trailer or offset table, a reference, offset or count out of range, overlapping objects that together are
// larger than the file, a cycle, more than plistMaximumDepth levels, and unsupported objects: sets, nulls, UIDs, and
// keys that are not strings.
// The layout is described at the head of CFBinaryPList.c in Apple's open-source CoreFoundation.
PlistValue readBinary(const Bytes& bytes);
