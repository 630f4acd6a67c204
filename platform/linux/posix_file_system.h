// The files of a POSIX system.
#pragma once

#include <string>

#include "platform/file_system.h"
#include "platform/posix/durable_files.h"

// Throws the errors of FileAttempt: the domain is "POSIX" and the code is the system's error number.
class PosixFileSystem : public FileSystem {
 public:
  explicit PosixFileSystem(Flush flush = Flush::toDisk) : flush_(flush) {}

  // Returns HOME if it is an absolute path, otherwise the home folder from the user database.
  std::string homeFolder() override;

  std::string resolved(const std::string& path) override;

  // Throws for anything but a regular file, without waiting for a pipe or a device, and for a file that is larger than
  // any property list can be.
  Bytes read(const std::string& path) override;

  std::vector<FileEntry> filesIn(const std::string& path) override;

  // See createFolders.
  void createFolder(const std::string& path, std::optional<unsigned> mode) override;

  // See writeNewFile.
  void writeNew(const std::string& path, const Bytes& bytes) override;

  // Throws for a symbolic link, whose target may belong to an attacker.
  void setMode(const std::string& path, unsigned mode) override;

  // See replaceFile. A file that does not exist gets the permission bits that the umask leaves to a new file.
  void writeAtomically(const std::string& path, const Bytes& bytes) override;

  // Does the same, but a file that does not exist gets exactly the permission bits `modeIfNew`.
  void writeAtomically(const std::string& path, const Bytes& bytes, unsigned modeIfNew);

  // See replaceFileIf. Reads the file in small blocks, and no further than the first difference.
  Replacement replaceIfHolds(const std::string& path, const Bytes& expected, const BytePieces& bytes,
                             const std::function<bool()>& mayReplace) override;

  void removeAbandonedFiles(const std::string& path, const std::vector<std::string>& inUse) override;

 private:
  Flush flush_;
};
