// The backups: before each rewrite, the bookmark file's bytes are copied to a new file. Backups are never deleted.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "platform/file_system.h"
#include "values/bytes.h"

// The path of the folder with the backups of the current user's bookmark file.
std::string backupsFolder();

// The path of the folder with the backups of the file at `path`. That is backupsFolder() for the user's bookmark file,
// and for each other file a folder of its own below it, named by the file's resolved path.
std::string backupsFolderOf(const std::string& path);

// True if the file at `backup` is in the folder with the backups of the file at `path`.
bool isBackupOf(const std::string& backup, const std::string& path);

// Creates the backups folder if it is missing, for its owner only. Throws the file system's Error.
void createBackupsFolder();

// Writes `bytes`, the content of the file at `path`, to a new file in the folder with its backups, which is created if
// missing. Returns the path of the new file. Throws the file system's Error.
std::string backUp(const Bytes& bytes, const std::string& path);

// Lists the backups of the file at `path`, newest first, without opening them.
std::vector<FileEntry> backupFiles(const std::string& path);

// Returns the path of the newest backup of the file at `path` that differs from the file; absent if there is none. A
// backup that cannot be read counts as the same, a file that cannot be read as different. Throws the file system's
// Error if the folder cannot be listed.
std::optional<std::string> lastDifferentBackup(const std::string& path);

// Returns the paths of the backups of the file at `path` whose names begin with `beginning`, with or without the start
// that all names have. A backup of exactly that name is the only one. Throws as lastDifferentBackup does.
std::vector<std::string> backupsNamed(const std::string& beginning, const std::string& path);

struct Backup {
  FileEntry file;
  std::optional<std::uint64_t> bookmarks;  // their number; none if the backup is not a readable bookmark file
  bool isCurrent;                          // the bookmark file has the same bytes
};

// Lists and reads the backups of the file at `path`, newest first. `current` are the bytes of that file, none if it
// cannot be read.
std::vector<Backup> listBackups(const std::string& path, const std::optional<Bytes>& current);

// Returns the sum of the sizes of backups, in bytes.
std::uint64_t totalSize(const std::vector<Backup>& backups);
