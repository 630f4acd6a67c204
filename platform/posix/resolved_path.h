// Paths without symbolic links.
#pragma once

#include <string>

// Implements FileSystem::resolved.
std::string resolvedPath(const std::string& path);
