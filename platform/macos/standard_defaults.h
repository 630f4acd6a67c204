// The settings, in the user's defaults.
#pragma once

#include "platform/user_defaults.h"

// NSUserDefaults' standard ones. What is no value of a property list is absent, and is not stored.
class StandardDefaults : public UserDefaults {
 public:
  std::optional<PlistValue> object(const std::string& key) override;
  void set(const std::string& key, const PlistValue& value) override;
};
