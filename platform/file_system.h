// Files and folders. Paths are absolute and in UTF-8. Every function throws Error if it fails; the description has the
// path and the system's own words.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "platform/calendar.h"
#include "values/bytes.h"

// The permission bits of a folder that needs no others.
inline constexpr unsigned defaultFolderMode = 0755;

struct FileEntry {
  std::string name;
  Instant modified;
  std::uint64_t size;  // in bytes
};

class FileSystem {
 public:
  virtual ~FileSystem() = default;

  // Returns the current user's home folder without a slash at the end; the empty string if that is the root folder.
  virtual std::string homeFolder() = 0;

  // Returns the whole content of a file. Follows symbolic links.
  virtual Bytes read(const std::string& path) = 0;

  // Returns the regular files in a folder, in no particular order. Includes symbolic links to regular files, with the
  // size and time of the file that they point to. Returns none if the folder does not exist.
  virtual std::vector<FileEntry> filesIn(const std::string& path) = 0;

  // Creates a folder and its missing parents, each with exactly the permission bits `mode`. Folders that exist keep
  // their permission bits, and it is no error if `path` itself exists.
  virtual void createFolder(const std::string& path, unsigned mode) = 0;

  // Writes a new file and flushes it to disk. Fails if anything of that name exists. Leaves no file behind on failure.
  virtual void writeNew(const std::string& path, const Bytes& bytes) = 0;

  // Sets the permission bits of a file that the user may read.
  virtual void setMode(const std::string& path, unsigned mode) = 0;

  // Replaces the content of a file atomically: writes a temporary file in the same folder, flushes it to disk and
  // renames it over the target. Keeps the target's permission bits. Creates the file if it does not exist. Follows a
  // symbolic link instead of replacing it.
  virtual void writeAtomically(const std::string& path, const Bytes& bytes) = 0;

  // Like writeAtomically, but only if the content of the file is exactly `expected`. Returns false, and leaves the file
  // alone, if it is not. Reads the file immediately before the rename, when the temporary file is complete, so that
  // another process has almost no time to change it unnoticed. Throws Error if the file does not exist.
  virtual bool replaceIfHolds(const std::string& path, const Bytes& expected, const Bytes& bytes) = 0;
};
