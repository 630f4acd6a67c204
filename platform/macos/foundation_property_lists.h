// Property lists by Foundation.
#pragma once

#include "platform/property_lists.h"

// NSPropertyListSerialization, without options. Errors are Foundation's own, and those of valueOf.
//
// A dictionary's keys come in no particular order. What it writes may differ from what it read where Foundation has
// more than one way to say the same, and a real of minus zero is written in XML as zero.
class FoundationPropertyLists : public PropertyLists {
 public:
  Parsed parse(const Bytes& bytes) override;
  Bytes serialize(const PlistValue& value, PropertyListFormat format) override;
};
