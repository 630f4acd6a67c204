// Parsing and serializing property lists.
#pragma once

#include <optional>

#include "values/byte_pieces.h"
#include "values/bytes.h"
#include "values/plist_value.h"

enum class PropertyListFormat { binary, xml, oldStyle };

class PropertyLists {
 public:
  struct Parsed {
    PlistValue value;
    PropertyListFormat format;
  };

  virtual ~PropertyLists() = default;

  // Detects the format of `bytes` and returns the value and that format. Throws Error if the bytes are malformed; the
  // description has the reason and the byte or line.
  virtual Parsed parse(const Bytes& bytes) = 0;

  // Returns `value` in `format`. Throws Error if the format can only be read (old-style) or cannot represent the value.
  virtual Bytes serialize(const PlistValue& value, PropertyListFormat format) = 0;

  // Returns the same bytes as serialize(). What stays as it was in the file of the value may be pieces of that file.
  virtual BytePieces serializeInPieces(const PlistValue& value, PropertyListFormat format) {
    return serialize(value, format);
  }

  // Returns true if parsing `bytes` gives `value`. Throws Error if they are malformed.
  virtual bool parsesTo(const PlistValue& value, const BytePieces& bytes) {
    return parse(bytes.joined()).value == value;
  }
};
