// The files of a POSIX system.
#pragma once

#include <string>

#include "platform/file_system.h"
#include "platform/posix/durable_files.h"

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

  std::vector<FileEntry> filesIn(const std::string& path) override;

  void createFolder(const std::string& path, unsigned mode) override;

  // As writeNewFile says.
  void writeNew(const std::string& path, const Bytes& bytes) override;

  void setMode(const std::string& path, unsigned mode) override;

  // As replaceFile says; a file that did not exist gets the permission bits of any new file.
  void writeAtomically(const std::string& path, const Bytes& bytes) override;

  // See replaceFileIf. Reads the file in small blocks, and no further than the first difference.
  bool replaceIfHolds(const std::string& path, const Bytes& expected, const Bytes& bytes) override;

  // The same, with the permission bits for a file that did not exist.
  void writeAtomically(const std::string& path, const Bytes& bytes, unsigned modeIfNew);

 private:
  Flush flush_;
};
