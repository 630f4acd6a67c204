// Our own reader and writer of property lists.
#pragma once

#include "platform/property_lists.h"

// Reads the binary format, the XML dialect and the old-style ASCII format, which it detects from the content; writes
// binary and XML. A parsed value refers to the given bytes and keeps them alive. Refuses files of 4 GiB or more.
class PropertyListCodec : public PropertyLists {
 public:
  Parsed parse(const Bytes& bytes) override;
  Bytes serialize(const PlistValue& value, PropertyListFormat format) override;
  BytePieces serializeInPieces(const PlistValue& value, PropertyListFormat format) override;
  // Does not parse the file that `value` is from, with its arrays in another order.
  bool parsesTo(const PlistValue& value, const BytePieces& bytes) override;
};
