// The settings of the current user for this program, by key. They last beyond the process.
#pragma once

#include <optional>
#include <string>

#include "values/plist_value.h"

class UserDefaults {
 public:
  virtual ~UserDefaults() = default;

  // What is stored now, of whatever type; absent if nothing is, or if the store cannot be read.
  virtual std::optional<PlistValue> object(const std::string& key) = 0;

  // Stores a value in the place of any other. Nothing tells of a failure.
  virtual void set(const std::string& key, const PlistValue& value) = 0;
};
