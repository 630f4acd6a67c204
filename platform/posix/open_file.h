// Opening files for reading.
#pragma once

#include <sys/stat.h>

#include <optional>
#include <string>

#include "platform/posix/file_attempt.h"
#include "platform/posix/file_descriptor.h"

// A regular file that is open for reading, and its status when it was opened.
struct OpenFile {
  FileDescriptor descriptor;
  struct stat status;
};

// Opens a regular file, without waiting for a pipe or a device. Returns none if it does not exist. Throws the errors of
// `attempt` for anything else that cannot be opened, or that is not a regular file.
std::optional<OpenFile> openIfPresent(const std::string& path, const FileAttempt& attempt);

// The same, but a file that does not exist is an error too.
OpenFile openPresent(const std::string& path, const FileAttempt& attempt);
