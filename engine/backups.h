// The backups: before each rewrite, the bookmark file's bytes are copied to a new file. Backups are never deleted.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "platform/file_system.h"
#include "values/bytes.h"

// The path of the folder with the current user's backups.
std::string backupsFolder();

// Creates the backups folder if it is missing, for its owner only. Throws the file system's Error.
void createBackupsFolder();

// Writes `bytes` to a new file in the backups folder, which is created if missing. Returns the file's path. Throws the
// file system's Error.
std::string backUp(const Bytes& bytes);

// Lists the files of all backups, newest first, without opening them.
std::vector<FileEntry> backupFiles();

struct Backup {
  FileEntry file;
  std::optional<std::uint64_t> bookmarks;  // their number; none if the backup is not a readable bookmark file
  bool isCurrent;                          // the bookmark file has the same bytes
};

// Lists and reads all backups, newest first. `current` are the bytes of the bookmark file, none if it cannot be read.
std::vector<Backup> listBackups(const std::optional<Bytes>& current);
