// The command of a desktop entry.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "platform/linux/session/desktop_entry.h"

// Returns the program and arguments of the entry's Exec line for a start without files: double quotes are removed,
// `%i`,
// `%c`, `%k` and `%%` are expanded, inside quotes too, and codes for files are removed. `location` is the entry's path.
// Absent if the line is missing or not valid.
std::optional<std::vector<std::string>> commandOf(const DesktopEntry& entry, const std::string& location);
