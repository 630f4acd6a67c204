// Files. Paths are absolute and in UTF-8. Every failure throws Error, with the path and the system's own words.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "platform/calendar.h"
#include "values/bytes.h"

// The permission bits of folders for which nothing else is said.
inline constexpr unsigned defaultFolderMode = 0755;

// A file in a folder, as the folder lists it.
struct FileEntry {
  std::string name;
  Instant modified;
  std::uint64_t size;  // in bytes
};

class FileSystem {
 public:
  virtual ~FileSystem() = default;

  // The current user's home folder, without a slash at the end.
  virtual std::string homeFolder() = 0;

  // The whole content of a file.
  virtual Bytes read(const std::string& path) = 0;

  // Whether a file's whole content, read anew, is exactly `expected`: the same bytes, whatever its dates say.
  virtual bool holds(const std::string& path, const Bytes& expected) = 0;

  // The regular files in a folder, those that symbolic links in it lead to among them, in any order. A folder that does
  // not exist has none; one that cannot be looked through is an error.
  virtual std::vector<FileEntry> filesIn(const std::string& path) = 0;

  // Creates a folder and the missing ones above it; every folder created gets exactly `mode` (permission bits),
  // those that exist keep theirs. A folder that exists already is no error.
  virtual void createFolder(const std::string& path, unsigned mode) = 0;

  // Writes a new file, flushed to disk. Fails if anything of that name exists, and leaves nothing behind when
  // it fails.
  virtual void writeNew(const std::string& path, const Bytes& bytes) = 0;

  // Sets the permission bits of a file that can be read.
  virtual void setMode(const std::string& path, unsigned mode) = 0;

  // Replaces a file's content whole or not at all, keeping its permission bits: a temporary file in the same
  // folder, flushed to disk, renamed over the target. A symbolic link is followed, not replaced.
  virtual void writeAtomically(const std::string& path, const Bytes& bytes) = 0;

  // The same for a file that may have been changed by others: answers false, and leaves it as it is, unless its whole
  // content is exactly `expected`. Its content is read anew, once everything is ready to replace it.
  virtual bool replaceIfHolds(const std::string& path, const Bytes& expected, const Bytes& bytes) = 0;
};
