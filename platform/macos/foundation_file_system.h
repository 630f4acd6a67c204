// Files and folders, through Foundation.
#pragma once

#include "platform/file_system.h"

// Uses NSFileManager and NSData, with their own error domains, codes and descriptions, to which it adds the path.
// Writing, creating folders and listing use POSIX calls and throw the errors of FileAttempt: NSData does not flush to
// disk, and creates a file with the permission bits of the umask before others can be set; NSFileManager gives folders
// to the superuser in other users' folders; listing needs nothing of Foundation.
class FoundationFileSystem : public FileSystem {
 public:
  std::string homeFolder() override;
  std::string resolved(const std::string& path) override;
  Bytes read(const std::string& path) override;
  std::vector<FileEntry> filesIn(const std::string& path) override;
  void createFolder(const std::string& path, std::optional<unsigned> mode) override;
  void writeNew(const std::string& path, const Bytes& bytes) override;
  void setMode(const std::string& path, unsigned mode) override;
  void writeAtomically(const std::string& path, const Bytes& bytes) override;
  Replacement replaceIfHolds(const std::string& path, const Bytes& expected, const BytePieces& bytes,
                             const std::function<bool()>& mayReplace) override;
  void removeAbandonedFiles(const std::string& path, const std::vector<std::string>& inUse) override;
};
