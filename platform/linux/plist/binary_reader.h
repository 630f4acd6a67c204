// Reads the binary property-list format ("bplist0" and any one character).
#pragma once

#include "values/bytes.h"
#include "values/plist_value.h"

// Whether bytes claim to be of this format.
bool looksBinary(const Bytes& bytes);

// The value in `bytes`, which it keeps and reads from. Takes time and memory in proportion to the file, however
// often its objects refer to one another. Throws Error, naming the byte, for: a damaged trailer or offset table; a
// reference, offset or size out of range; a cycle; more than plistMaximumDepth levels; and objects that are no
// values of ours (sets, nulls, UIDs, keys that are not strings).
// The layout is that of CFBinaryPList.c in Apple's open-source CoreFoundation, described at its head.
PlistValue readBinary(const Bytes& bytes);
