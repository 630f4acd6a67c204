// Writes the XML format of property lists, byte for byte as the platform does.
#pragma once

#include "values/byte_pieces.h"
#include "values/plist_value.h"

// Returns `value` as XML text. If `value` is a parsed XML file in which only arrays changed their order, the result is
// a copy of that file with the elements of these arrays moved. Otherwise it is a new text; dictionaries keep the order
// of their keys. Throws Error for a value that XML cannot represent: a string with an unpaired surrogate, a date out
// of range, or a tree with so many shared parts that the text would be 4 GiB or larger. Also throws for a parsed XML
// file in another encoding than UTF-8, because a new text would lose its comments and change how its values are
// written.
BytePieces writeXml(const PlistValue& value);
