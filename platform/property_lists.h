// Property lists: bytes to values and back.
#pragma once

#include <optional>

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

  // The value in `bytes`, in whichever format they are, and that format. Throws Error if they are in none, saying
  // what is wrong and at which byte or line.
  virtual Parsed parse(const Bytes& bytes) = 0;

  // `value` in `format`. Throws Error if the format cannot be written (the old-style one can only be read) or
  // cannot hold the value.
  virtual Bytes serialize(const PlistValue& value, PropertyListFormat format) = 0;
};
