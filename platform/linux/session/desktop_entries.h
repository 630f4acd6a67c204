// Finds installed applications by their desktop entries.
#pragma once

#include <optional>
#include <string>

// Returns the path of the desktop entry "<identifier>.desktop" in the folder "applications" of the first data folder
// that has it: XDG_DATA_HOME, then those of XDG_DATA_DIRS. A hyphen in the identifier may stand for a subfolder. An
// entry hides those in later folders even if it is not usable. Absent if the entry says it is hidden, does not describe
// an application, or names a program to try that is not installed.
std::optional<std::string> findDesktopEntry(const std::string& identifier);
