// The program's own reader and writer of property lists.
#pragma once

#include "platform/property_lists.h"

// Reads the binary format, the XML dialect and the old-style ASCII format, told apart by content; writes the first
// two. What it reads keeps the given bytes and lies in them. Files of 4 GiB or more are refused.
class PropertyListCodec : public PropertyLists {
 public:
  Parsed parse(const Bytes& bytes) override;
  Bytes serialize(const PlistValue& value, PropertyListFormat format) override;
};
