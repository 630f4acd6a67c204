#include "platform/linux/session/desktop_entries.h"

#include <filesystem>
#include <sstream>
#include <system_error>
#include <vector>

#include "platform/linux/session/desktop_entry.h"
#include "platform/linux/session/program_search.h"
#include "platform/posix/surroundings.h"

namespace {

bool isFile(const std::string& path) {
  std::error_code ignored;
  return std::filesystem::is_regular_file(path, ignored);
}

// Returns the file's path in this folder, or in a subfolder whose name ends at a hyphen of `name`.
std::optional<std::string> findBelow(const std::string& folder, const std::string& name) {
  const std::string path = folder + "/" + name;
  if (isFile(path)) return path;
  for (std::size_t hyphen = name.find('-'); hyphen != std::string::npos; hyphen = name.find('-', hyphen + 1)) {
    std::error_code ignored;
    const std::string below = folder + "/" + name.substr(0, hyphen);
    if (!std::filesystem::is_directory(below, ignored)) continue;
    if (auto found = findBelow(below, name.substr(hyphen + 1))) return found;
  }
  return std::nullopt;
}

bool isInstalled(const DesktopEntry& entry) {
  const std::optional<std::string> tried = entry.text("TryExec");
  return !entry.isTrue("Hidden") && (!tried || isProgramInstalled(*tried));
}

// Absent if the variable is not set or empty.
std::optional<std::string> setting(const char* variable) {
  const auto value = variableOfEnvironment(variable);
  return value && !value->empty() ? value : std::nullopt;
}

// Returns the user's data folder, then the system's. Relative paths are not valid here and are left out.
std::vector<std::filesystem::path> dataFolders() {
  std::vector<std::filesystem::path> folders;
  std::istringstream systemFolders(setting("XDG_DATA_DIRS").value_or(""));
  for (std::string folder; std::getline(systemFolders, folder, ':');)
    if (folder.starts_with('/')) folders.push_back(std::filesystem::path(folder).lexically_normal());
  if (folders.empty()) folders = {"/usr/local/share", "/usr/share"};
  const std::filesystem::path home = setting("HOME").value_or("/");
  const std::filesystem::path userFolder = setting("XDG_DATA_HOME").value_or(home / ".local/share");
  if (userFolder.is_absolute()) folders.insert(folders.begin(), userFolder);
  return folders;
}

}  // namespace

std::optional<std::string> findDesktopEntry(const std::string& identifier) {
  if (identifier.empty() || identifier.find_first_of(std::string("/\0", 2)) != std::string::npos) return std::nullopt;
  for (const std::filesystem::path& folder : dataFolders()) {
    const auto path = findBelow(folder / "applications", identifier + ".desktop");
    if (!path) continue;
    const auto entry = DesktopEntry::read(*path);
    return entry && isInstalled(*entry) ? path : std::nullopt;
  }
  return std::nullopt;
}
