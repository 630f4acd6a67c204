#include "platform/linux/session/desktop_entries.h"

#include <QFile>
#include <QStandardPaths>
#include <filesystem>

#include "platform/linux/session/desktop_entry.h"
#include "platform/linux/session/program_search.h"

namespace {

bool isFile(const std::string& path) {
  std::error_code ignored;
  return std::filesystem::is_regular_file(path, ignored);
}

// The file's path in this folder, or below it where a hyphen of the name separates a folder from the rest.
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
  return !entry.isTrue("Hidden") && (!tried || findProgram(*tried));
}

}  // namespace

std::optional<std::string> findDesktopEntry(const std::string& identifier) {
  if (identifier.empty() || identifier.find_first_of(std::string("/\0", 2)) != std::string::npos) return std::nullopt;
  for (const QString& folder : QStandardPaths::standardLocations(QStandardPaths::ApplicationsLocation)) {
    if (!folder.startsWith('/')) continue;  // not valid, and to be ignored
    const auto path = findBelow(QFile::encodeName(folder).toStdString(), identifier + ".desktop");
    if (!path) continue;
    const auto entry = DesktopEntry::read(*path);
    return entry && isInstalled(*entry) ? path : std::nullopt;
  }
  return std::nullopt;
}
