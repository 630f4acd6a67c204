// Creating folders durably.
#pragma once

#include <optional>
#include <string>

#include "platform/posix/durable_files.h"

// Creates a folder and its missing parents, and flushes their names to disk. Each gets exactly the permission bits
// `mode`, or what the umask leaves of 0777 if that is absent, and belongs to ownershipIn its parent. Folders that exist
// stay as they are, and it is no error if `path` itself exists. Throws the errors of FileAttempt.
void createFolders(const std::string& path, std::optional<mode_t> mode, Flush flush = Flush::toDisk);
