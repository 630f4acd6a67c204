// Property lists, through Foundation.
#pragma once

#include "platform/property_lists.h"

// Uses NSPropertyListSerialization without options. Throws Foundation's own errors and those of valueOf.
//
// The keys of a dictionary come in no particular order. Serializing a parsed value may give other bytes than those that
// were parsed, because formats have several representations of a value. In XML, the real -0.0 is written as 0.0.
class FoundationPropertyLists : public PropertyLists {
 public:
  Parsed parse(const Bytes& bytes) override;
  Bytes serialize(const PlistValue& value, PropertyListFormat format) override;
};
