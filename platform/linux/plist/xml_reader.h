// Reads the XML dialect of property lists. It is not XML 1.0: strings hold raw carriage returns and control
// characters and are taken as they are, the document needs no `plist` element, and what follows it is ignored.
#pragma once

#include "values/bytes.h"
#include "values/plist_value.h"

// The value in UTF-8 text, without a byte-order mark, which it keeps and reads from. `isWholeFile` says that the text
// is the file itself, and no conversion of it, so that a rearranged value can be written by rewriting it. Throws Error,
// naming the line, for everything that the platform's own reader refuses (CFPropertyList.c in Apple's open-source
// CoreFoundation).
PlistValue readXml(const Bytes& text, bool isWholeFile);
