// A desktop entry: the file with an application's name and command.
#pragma once

#include <map>
#include <optional>
#include <string>

class DesktopEntry {
 public:
  // Absent if there is no such file, or if it does not describe an application.
  static std::optional<DesktopEntry> read(const std::string& path);

  // Returns a key's value with its escapes resolved; absent if the entry does not have the key.
  std::optional<std::string> text(const std::string& key) const;

  // Returns the value in the user's language (LC_ALL, LC_MESSAGES or LANG) if there is one, else the value of the plain
  // key.
  std::optional<std::string> localizedText(const std::string& key) const;

  bool isTrue(const std::string& key) const { return text(key) == "true"; }

 private:
  std::map<std::string, std::string> values_;  // of the group [Desktop Entry], with escapes
};
