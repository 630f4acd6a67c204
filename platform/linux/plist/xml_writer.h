// Writes the XML format as the platform itself does, so that a file it wrote comes back byte for byte.
#pragma once

#include "values/bytes.h"
#include "values/plist_value.h"

// `value` as XML text. Where it is a parsed XML file of which only arrays changed their order, that file with just
// those elements moved. Otherwise a new text, keys in their order. Throws Error for a value that XML cannot hold: a
// string with an unpaired surrogate, a date beyond every calendar, or a tree whose parts are shared so often that the
// text would be 4 GiB or more.
Bytes writeXml(const PlistValue& value);
