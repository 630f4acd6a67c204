// The persistent settings of the current user for this program, by key.
#pragma once

#include <optional>
#include <string>

#include "values/plist_value.h"

class UserDefaults {
 public:
  virtual ~UserDefaults() = default;

  // Returns the value stored for `key`, of any type; absent if there is none or the settings cannot be read.
  virtual std::optional<PlistValue> object(const std::string& key) = 0;

  // Stores a value, replacing the previous one. Failures are not reported to the caller.
  virtual void set(const std::string& key, const PlistValue& value) = 0;
};
