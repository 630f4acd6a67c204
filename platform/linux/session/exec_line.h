// The command of a desktop entry.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "platform/linux/session/desktop_entry.h"

// The program and its arguments that the entry's Exec line says, for a start without files: arguments in double quotes
// are unquoted, `%i`, `%c`, `%k` and `%%` are expanded, in quotes too, and codes for files are taken out. `location` is
// the entry's path. Absent if there is no such line or it is not valid.
std::optional<std::vector<std::string>> commandOf(const DesktopEntry& entry, const std::string& location);
