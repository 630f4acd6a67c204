// The program's own reader and writer of property lists, with a journal.
#pragma once

#include "platform/property_lists.h"
#include "tests/support/journal.h"
#include "tests/support/native_parts.h"

// Records "parse", and "serialize" with the format: "binary", "xml" or "old-style".
class VirtualPropertyLists : public PropertyLists {
 public:
  explicit VirtualPropertyLists(Journal& journal) : journal_(journal) {}

  Parsed parse(const Bytes& bytes) override;
  Bytes serialize(const PlistValue& value, PropertyListFormat format) override;

 private:
  Journal& journal_;
  NativePropertyLists codec_;
};
