// The program's own reader and writer of property lists, with a journal.
#pragma once

#include <optional>
#include <utility>

#include "platform/property_lists.h"
#include "tests/support/journal.h"
#include "tests/support/native_parts.h"

// Records "parse", "serialize" with the format ("binary", "xml" or "old-style"), and "verify".
class VirtualPropertyLists : public PropertyLists {
 public:
  explicit VirtualPropertyLists(Journal& journal) : journal_(journal) {}

  Parsed parse(const Bytes& bytes) override;
  Bytes serialize(const PlistValue& value, PropertyListFormat format) override;
  bool parsesTo(const PlistValue& value, const BytePieces& bytes) override;

  // Makes the next `serialize` return the bytes of another value.
  void willSerialize(PlistValue value) { serialized_ = std::move(value); }

 private:
  Journal& journal_;
  NativePropertyLists codec_;
  std::optional<PlistValue> serialized_;
};
