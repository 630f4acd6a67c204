#include "platform/macos/standard_defaults.h"

#include "platform/macos/conversions.h"

std::optional<PlistValue> StandardDefaults::object(const std::string& key) {
  id const stored = [NSUserDefaults.standardUserDefaults objectForKey:stringOf(key)];
  if (stored == nil) return std::nullopt;
  try {
    return valueOf(stored);
  } catch (const Error&) {
    return std::nullopt;
  }
}

void StandardDefaults::set(const std::string& key, const PlistValue& value) {
  [NSUserDefaults.standardUserDefaults setObject:objectOf(value) forKey:stringOf(key)];
}
