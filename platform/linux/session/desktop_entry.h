// A desktop entry: the file that says how an application is called and started.
#pragma once

#include <map>
#include <optional>
#include <string>

class DesktopEntry {
 public:
  // Absent if there is no such file, or none that describes an application.
  static std::optional<DesktopEntry> read(const std::string& path);

  // A key's value with its escapes resolved; absent if the entry does not have the key.
  std::optional<std::string> text(const std::string& key) const;

  // The same in the user's language if the entry has it in that, by LC_ALL, LC_MESSAGES or LANG.
  std::optional<std::string> localizedText(const std::string& key) const;

  bool isTrue(const std::string& key) const { return text(key) == "true"; }

 private:
  std::map<std::string, std::string> values_;  // as they are written, of the group that counts
};
