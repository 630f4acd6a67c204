// Files and folders. Paths are absolute and in UTF-8. Every function throws Error if it fails; the description has the
// path and the system's own words.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "platform/calendar.h"
#include "values/byte_pieces.h"
#include "values/bytes.h"

// For a folder that needs no other permission bits than those that the system gives it.
inline constexpr std::nullopt_t defaultAttributes = std::nullopt;

struct FileEntry {
  std::string name;
  Instant modified;
  std::uint64_t size;  // in bytes
};

// What replaceIfHolds did.
struct Replacement {
  bool done = false;               // the file is replaced; if not, it is as it was
  bool changedLate = false;        // another process changed the old file after it was compared
  std::optional<Bytes> lateBytes;  // the content of the old file then; absent if it could not be read
};

class FileSystem {
 public:
  virtual ~FileSystem() = default;

  // Returns the current user's home folder without a slash at the end; the empty string if that is the root folder.
  virtual std::string homeFolder() = 0;

  // Returns the path without symbolic links, "." and "..", as far as it exists; the rest of it stays. Equal results
  // mean the same file. Throws nothing.
  virtual std::string resolved(const std::string& path) = 0;

  // Returns the whole content of a file. Follows symbolic links.
  virtual Bytes read(const std::string& path) = 0;

  // Returns the regular files in a folder, in no particular order. Includes symbolic links to regular files, with the
  // size and time of the file that they point to. Returns none if the folder does not exist.
  virtual std::vector<FileEntry> filesIn(const std::string& path) = 0;

  // Creates a folder and its missing parents, each with exactly the permission bits `mode`, or with defaultAttributes.
  // Folders that exist keep their permission bits, and it is no error if `path` itself exists.
  virtual void createFolder(const std::string& path, std::optional<unsigned> mode) = 0;

  // Writes a new file and flushes it to disk. Fails if anything of that name exists. Leaves no file behind on failure.
  virtual void writeNew(const std::string& path, const Bytes& bytes) = 0;

  // Sets the permission bits of a file that the user may read.
  virtual void setMode(const std::string& path, unsigned mode) = 0;

  // Replaces the content of a file atomically: writes a temporary file in the same folder, flushes it to disk and
  // renames it over the target. Keeps the target's permissions and extended attributes, as far as the system permits
  // that, and gives nobody more than before. Creates the file if it does not exist. Follows a symbolic link instead of
  // replacing it.
  virtual void writeAtomically(const std::string& path, const Bytes& bytes) = 0;

  // Like writeAtomically, but only if `mayReplace` returns true and then the content of the file is exactly `expected`.
  // Asks and reads the file immediately before the rename, when the temporary file is complete, so that another process
  // has almost no time to change it unnoticed. Looks at the old file again after the rename, because a process that had
  // it open may have written to it. Throws Error if the file does not exist, and whatever `mayReplace` throws, but
  // nothing once the file is replaced.
  virtual Replacement replaceIfHolds(const std::string& path, const Bytes& expected, const BytePieces& bytes,
                                     const std::function<bool()>& mayReplace) = 0;

  // Removes the temporary files that killed processes have left beside the file at `path`, which may not exist, or
  // beside the file that it links to. Removes neither these nor any of `inUse`. Throws nothing.
  virtual void removeAbandonedFiles(const std::string& path, const std::vector<std::string>& inUse) = 0;
};
