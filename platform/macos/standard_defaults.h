// The settings in the user defaults of macOS.
#pragma once

#include "platform/user_defaults.h"

// Uses the standard user defaults of NSUserDefaults. A stored object that is no property-list value counts as absent.
class StandardDefaults : public UserDefaults {
 public:
  std::optional<PlistValue> object(const std::string& key) override;
  void set(const std::string& key, const PlistValue& value) override;
};
