#include "platform/linux/updates/running_system.h"

#include <fstream>
#include <iterator>
#include <map>
#include <sstream>

namespace {

constexpr std::size_t longestOsRelease = 65536;

constexpr std::string_view processor =
#if defined(__x86_64__)
    "amd64";
#elif defined(__aarch64__)
    "arm64";
#else
    "";  // no package is for it
#endif

// Without the quotes of a shell's value. The values that matter here have no escapes.
std::string unquoted(const std::string& value) {
  const bool isQuoted =
      value.size() >= 2 && (value.front() == '"' || value.front() == '\'') && value.back() == value.front();
  return isQuoted ? value.substr(1, value.size() - 2) : value;
}

std::map<std::string, std::string> assignments(std::string_view text) {
  std::map<std::string, std::string> values;
  std::istringstream lines{std::string(text)};
  for (std::string line; std::getline(lines, line);)
    if (const std::size_t equals = line.find('='); equals != std::string::npos)
      values.insert_or_assign(line.substr(0, equals), unquoted(line.substr(equals + 1)));
  return values;
}

bool hasWord(const std::string& text, const std::string& wanted) {
  std::istringstream words(text);
  for (std::string word; words >> word;)
    if (word == wanted) return true;
  return false;
}

}  // namespace

RunningSystem systemOf(std::string_view osRelease) {
  std::map<std::string, std::string> values = assignments(osRelease);
  const bool isDebian = values["ID"] == "debian";
  return {.processor = std::string(processor),
          .version = isDebian ? values["VERSION_ID"] : "",
          .isLikeDebian = isDebian || hasWord(values["ID_LIKE"], "debian")};
}

RunningSystem runningSystem() {
  for (const char* path : {"/etc/os-release", "/usr/lib/os-release"}) {
    std::ifstream file(path, std::ios::binary);
    if (!file) continue;
    std::string text(longestOsRelease, '\0');
    file.read(text.data(), static_cast<std::streamsize>(text.size()));
    return systemOf(std::string_view(text).substr(0, static_cast<std::size_t>(file.gcount())));
  }
  return systemOf("");
}
