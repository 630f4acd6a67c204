// The program's own reader and writer of property lists, watched.
#pragma once

#include "platform/property_lists.h"
#include "tests/support/journal.h"
#include "tests/support/native_parts.h"

// Noted are "parse", and "serialize" with the format: "binary", "xml", "old-style".
class VirtualPropertyLists : public PropertyLists {
 public:
  explicit VirtualPropertyLists(Journal& journal) : journal_(journal) {}

  Parsed parse(const Bytes& bytes) override;
  Bytes serialize(const PlistValue& value, PropertyListFormat format) override;

 private:
  Journal& journal_;
  NativePropertyLists codec_;
};
