// Reads the XML dialect of property lists. It is not XML 1.0: strings may have raw carriage returns and control
// characters, which are kept, the `plist` element is optional, and text after the root element is ignored.
#pragma once

#include "values/bytes.h"
#include "values/plist_value.h"

// Returns the value in UTF-8 text without a byte-order mark. The value refers to the text and keeps it alive.
// `isWholeFile` is true if the text is the unconverted file, so that a rearranged value can be written by rewriting it.
// Throws Error with the line of the fault for everything that the platform's own reader refuses (CFPropertyList.c in
// Apple's open-source CoreFoundation).
PlistValue readXml(const Bytes& text, bool isWholeFile);
