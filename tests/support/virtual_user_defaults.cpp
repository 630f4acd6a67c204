#include "tests/support/virtual_user_defaults.h"

#include <vector>

namespace {

// The text of a Boolean, an integer, or a list of these: the program stores nothing else.
std::string textOf(const PlistValue& value) {
  if (const auto boolean = value.boolean()) return *boolean ? "true" : "false";
  if (const auto integer = value.integer()) return integer->decimal();
  if (!value.is(PlistKind::array)) return "something else";
  std::string list;
  for (std::size_t index = 0; index < value.size(); ++index) list += (index > 0 ? ", " : "") + textOf(value.at(index));
  return "[" + list + "]";
}

}  // namespace

std::optional<PlistValue> VirtualUserDefaults::object(const std::string& key) {
  const auto found = values_.find(key);
  return found == values_.end() ? std::nullopt : std::optional(found->second);
}

void VirtualUserDefaults::set(const std::string& key, const PlistValue& value) {
  journal_.perform("set", key + " " + textOf(value), [&] { put(key, value); });
}

PlistValue numberList(const std::vector<int>& numbers) {
  return PlistValue::array(std::vector<PlistValue>(numbers.begin(), numbers.end()));
}
