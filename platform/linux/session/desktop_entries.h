// Which applications are installed, by their desktop entries.
#pragma once

#include <optional>
#include <string>

// The path of the desktop entry "<identifier>.desktop": in the folder "applications" of the user's data folder, or else
// of the first of the system's data folders that has it (XDG_DATA_HOME, XDG_DATA_DIRS). A hyphen of the identifier may
// stand for a folder below it. The first one found counts, so one that says that it is hidden hides those that follow.
// Absent, too, if the entry does not describe an application, or names a program to try that is not there.
std::optional<std::string> findDesktopEntry(const std::string& identifier);
