// The backups: a copy of the bookmark file's bytes for each time that the program replaced it. None is ever removed.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "platform/file_system.h"
#include "values/bytes.h"

// Where the backups of the current user's bookmark file are kept.
std::string backupsFolder();

// Writes `bytes` to a new file in the backups folder, which is made if it is missing; answers the file's path.
std::string backUp(const Bytes& bytes);

// The files of all backups, the newest first. Not one of them is opened.
std::vector<FileEntry> backupFiles();

struct Backup {
  FileEntry file;
  std::optional<std::uint64_t> bookmarks;  // how many; absent if it cannot be read as a bookmark file
  bool isCurrent;                          // it holds the very bytes that the bookmark file has now
};

// All backups, the newest first. `current` are the bytes of the bookmark file, absent if they cannot be read.
std::vector<Backup> listBackups(const std::optional<Bytes>& current);
