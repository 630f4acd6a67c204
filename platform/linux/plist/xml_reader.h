// Reads the XML dialect of property lists. It is not XML 1.0: strings may have raw carriage returns and control
// characters, which are kept, the `plist` element is optional, and text after the root element is ignored.
#pragma once

#include "values/bytes.h"
#include "values/plist_value.h"

// Returns the value in a file. `text` is its text in UTF-8 without a byte-order mark: the end of the file or a
// converted copy. The value refers to the text and keeps it alive. Only if the text is part of the file can a
// rearranged value be written. Throws Error with the line of the fault for everything that the platform's own reader
// refuses (CFPropertyList.c in Apple's open-source CoreFoundation).
PlistValue readXml(const Bytes& file, const Bytes& text);
