// Finds programs.
#pragma once

#include <string>

// Returns true if the program can be executed: the file of an absolute path, or of a relative one in a folder of PATH.
bool isProgramInstalled(const std::string& program);
