// Reads the old-style ASCII property-list format: { key = value; }, ( element, element ), <0fbd77>, "string" and word.
#pragma once

#include "values/bytes.h"
#include "values/plist_value.h"

// Returns the value in UTF-8 text without a byte-order mark. The value refers to the text and keeps it alive. A text
// with more after its first string is a strings file: the content of a dictionary without its braces. White space and
// comments alone are an empty dictionary. Throws Error with the line of the fault for everything that the platform's
// own reader refuses (CFOldStylePList.c in Apple's open-source CoreFoundation).
PlistValue readOldStyle(const Bytes& text);
