#include "platform/linux/collation_locale.h"

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <optional>
#include <string_view>

namespace {

constexpr const char* settingsKey = "sessionLocale";

// Returns the value of the first variable that selects a locale for collation; empty if none does.
std::string_view namedLocale() {
  for (const char* variable : {"LC_ALL", "LC_COLLATE", "LANG"})
    if (const char* value = std::getenv(variable); value != nullptr && *value != '\0') return value;
  return {};
}

// Returns the locale that a value of these variables names.
std::string localeIn(std::string_view value) {
  const std::string name(value.substr(0, value.find_first_of(".@")));
  const bool isLanguage = !name.empty() && name != "C" && name != "POSIX" &&
                          std::all_of(name.begin(), name.end(), [](unsigned char character) {
                            return std::isalnum(character) != 0 || character == '_' || character == '-';
                          });
  return isLanguage ? name : rootLocale;
}

std::string rememberedLocale(UserDefaults& settings) {
  const std::optional<PlistValue> stored = settings.object(settingsKey);
  return stored && stored->is(PlistKind::string) ? localeIn(utf8(stored->string()->utf16())) : rootLocale;
}

}  // namespace

std::string collationLocale() { return localeIn(namedLocale()); }

std::string collationLocale(UserDefaults& settings) {
  return namedLocale().empty() ? rememberedLocale(settings) : collationLocale();
}

void rememberCollationLocale(UserDefaults& settings) {
  if (!namedLocale().empty() && collationLocale() != rememberedLocale(settings))
    settings.set(settingsKey, utf16(collationLocale()));
}
