// Reads the old-style ASCII format: { key = value; }, ( element, element ), <0fbd77>, "string" and word.
#pragma once

#include "values/bytes.h"
#include "values/plist_value.h"

// The value in UTF-8 text, without a byte-order mark, which it keeps and reads from. A text that begins with a
// string but goes on is a strings file: the content of a dictionary without its braces. A text of nothing but
// white space and comments is an empty dictionary. Throws Error, naming the line, for everything that the
// platform's own reader refuses (CFOldStylePList.c in Apple's open-source CoreFoundation).
PlistValue readOldStyle(const Bytes& text);
