// Listing a folder.
#pragma once

#include <string>
#include <vector>

#include "platform/file_system.h"

// Implements FileSystem::filesIn. Throws the errors of FileAttempt.
std::vector<FileEntry> regularFilesIn(const std::string& path);
