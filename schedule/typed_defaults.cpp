#include "schedule/typed_defaults.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <limits>
#include <string_view>
#include <system_error>

#include "platform/platform.h"

namespace {

std::string_view afterWhiteSpace(std::string_view text) {
  return text.substr(std::min(text.find_first_not_of(" \t\n\v\f\r"), text.size()));
}

bool isTrue(std::string_view text) {
  text = afterWhiteSpace(text);
  if (text.starts_with('+') || text.starts_with('-')) text.remove_prefix(1);
  text.remove_prefix(std::min(text.find_first_not_of('0'), text.size()));
  return !text.empty() && std::string_view("YyTt123456789").find(text.front()) != std::string_view::npos;
}

int leadingInteger(std::string_view text) {
  text = afterWhiteSpace(text);
  const bool isNegative = text.starts_with('-');
  if (text.starts_with('+') && !text.starts_with("+-")) text.remove_prefix(1);
  int number = 0;
  const std::errc problem = std::from_chars(text.data(), text.data() + text.size(), number).ec;
  if (problem != std::errc::result_out_of_range) return number;
  return isNegative ? std::numeric_limits<int>::min() : std::numeric_limits<int>::max();
}

int truncated(double real) {
  constexpr std::numeric_limits<int> limits;
  if (std::isnan(real)) return 0;
  return static_cast<int>(std::clamp<double>(real, limits.min(), limits.max()));
}

}  // namespace

bool booleanForKey(const std::string& key) {
  const std::optional<PlistValue> stored = platform().userDefaults.object(key);
  if (!stored) return false;
  if (const auto boolean = stored->boolean()) return *boolean;
  if (const auto integer = stored->integer()) return integer->bits() != 0;
  if (const auto real = stored->real()) return *real != 0;
  if (const auto string = stored->string()) return isTrue(utf8(string->utf16()));
  return false;
}

int integerForKey(const std::string& key) {
  const std::optional<PlistValue> stored = platform().userDefaults.object(key);
  if (!stored) return 0;
  if (const auto boolean = stored->boolean()) return *boolean ? 1 : 0;
  if (const auto integer = stored->integer()) return integer->nearestInt();
  if (const auto real = stored->real()) return truncated(*real);
  if (const auto string = stored->string()) return leadingInteger(utf8(string->utf16()));
  return 0;
}
