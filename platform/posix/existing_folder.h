// Finds a folder to show.
#pragma once

#include <string>

// Returns the folder at this absolute path or, if there is none, the nearest one above it.
std::string existingFolder(const std::string& path);
