// The user defaults of a virtual machine.
#pragma once

#include <map>
#include <optional>
#include <string>

#include "platform/user_defaults.h"
#include "tests/support/journal.h"

// Records each write as "set" with the key and the value ("set dailyHour 9"). Reads are not recorded.
class VirtualUserDefaults : public UserDefaults {
 public:
  explicit VirtualUserDefaults(Journal& journal) : journal_(journal) {}

  std::optional<PlistValue> object(const std::string& key) override;
  void set(const std::string& key, const PlistValue& value) override;

  // Stores and removes values of any type for a test. Not recorded.
  void put(const std::string& key, const PlistValue& value) { values_.insert_or_assign(key, value); }
  void remove(const std::string& key) { values_.erase(key); }
  const std::map<std::string, PlistValue>& values() const { return values_; }

 private:
  Journal& journal_;
  std::map<std::string, PlistValue> values_;
};

// An array of whole numbers.
PlistValue numberList(const std::vector<int>& numbers);
