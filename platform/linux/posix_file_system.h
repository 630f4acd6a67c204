// The files of a POSIX system.
#pragma once

#include <string>

#include "platform/file_system.h"

// Whether what was written is waited for until the disk has it.
enum class Flush { toDisk, never };

// Errors have the domain "POSIX", the system's error number as code, and a description with the file's name, the
// system's words and the whole path.
class PosixFileSystem : public FileSystem {
 public:
  // `never` is for measuring what everything but the disk costs; nobody's bookmarks are written so.
  explicit PosixFileSystem(Flush flush = Flush::toDisk) : flush_(flush) {}

  // HOME if it holds an absolute path, else what the user database says. The root folder is the empty string, so
  // that a path can always be appended.
  std::string homeFolder() override;

  // Regular files only: a folder, a pipe or a device is an error and is not waited for.
  Bytes read(const std::string& path) override;

  // Reads through a small buffer, and no further than the first difference.
  bool holds(const std::string& path, const Bytes& expected) override;

  void createFolder(const std::string& path, unsigned mode) override;

  // The file is readable for its owner only from its first moment on, whatever the umask; a symbolic link counts
  // as a name that exists.
  void writeNew(const std::string& path, const Bytes& bytes) override;

  void setMode(const std::string& path, unsigned mode) override;

  // A file that did not exist gets the permission bits of any new file. The owner and group of an old one are kept
  // where the system permits it. Once the new file is in place the call has succeeded: a failure to flush the
  // folder after that is not reported, because then either the old file or the new one is whole on disk, and
  // saying that nothing was replaced would be wrong.
  void writeAtomically(const std::string& path, const Bytes& bytes) override;

  // The same, but a file that did not exist gets exactly `modeIfNew`, from the moment on that it has its name.
  void writeAtomically(const std::string& path, const Bytes& bytes, unsigned modeIfNew);

 private:
  Flush flush_;
};
