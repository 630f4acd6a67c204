#include "platform/linux/session/desktop_entry.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string_view>
#include <vector>

#include "platform/linux/trimmed_text.h"

namespace {

constexpr std::string_view group = "[Desktop Entry]";

// Returns the character for a backslash and this one; absent if they are no escape.
std::optional<char> escaped(char character) {
  switch (character) {
    case 's': return ' ';
    case 'n': return '\n';
    case 't': return '\t';
    case 'r': return '\r';
    case '\\': return '\\';
    default: return std::nullopt;
  }
}

std::string unescaped(const std::string& value) {
  std::string text;
  for (std::size_t index = 0; index < value.size(); ++index) {
    const bool isPair = value[index] == '\\' && index + 1 < value.size();
    const std::optional<char> meant = isPair ? escaped(value[index + 1]) : std::nullopt;
    text += meant.value_or(value[index]);
    if (meant) ++index;
  }
  return text;
}

std::string environment(const char* name) {
  const char* value = std::getenv(name);
  return value == nullptr ? "" : value;
}

// Returns the user's locale as keys may be marked with it, best first: "de_AT@euro", "de_AT", "de@euro" and "de" for
// "de_AT.UTF-8@euro".
std::vector<std::string> localesOfKeys() {
  std::string locale;
  for (const char* name : {"LC_ALL", "LC_MESSAGES", "LANG"})
    if (locale.empty()) locale = environment(name);
  const std::size_t modifierStart = locale.find('@');
  const std::string modifier = modifierStart == std::string::npos ? "" : locale.substr(modifierStart);
  const std::string country = locale.substr(0, locale.find_first_of(".@"));
  const std::string language = country.substr(0, country.find('_'));
  return {country + modifier, country, language + modifier, language};
}

}  // namespace

std::optional<DesktopEntry> DesktopEntry::read(const std::string& path) {
  std::error_code ignored;
  if (!std::filesystem::is_regular_file(path, ignored)) return std::nullopt;
  std::ifstream file(path, std::ios::binary);
  DesktopEntry entry;
  bool isInGroup = false;
  for (std::string line; std::getline(file, line);) {
    const std::string_view content = trimmed(line);
    const std::size_t separator = content.find('=');
    if (content.empty() || content.front() == '#') continue;
    if (content.front() == '[')
      isInGroup = content == group;
    else if (isInGroup && separator != std::string_view::npos)
      entry.values_.emplace(trimmed(content.substr(0, separator)), trimmed(content.substr(separator + 1)));
  }
  if (entry.text("Type") != "Application") return std::nullopt;
  return entry;
}

std::optional<std::string> DesktopEntry::text(const std::string& key) const {
  const auto found = values_.find(key);
  if (found == values_.end()) return std::nullopt;
  return unescaped(found->second);
}

std::optional<std::string> DesktopEntry::localizedText(const std::string& key) const {
  for (const std::string& locale : localesOfKeys())
    if (auto found = text(std::string(key).append("[").append(locale).append("]"))) return found;
  return text(key);
}
