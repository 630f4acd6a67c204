// Files by Foundation.
#pragma once

#include "platform/file_system.h"

// NSFileManager and NSData, whose errors come with their own domain, code and description. Only the operations that
// write files are the system's plain ones: NSData does not say that the disk has what it wrote, and gives a new file
// the permission bits of any new file until they are set. So is looking through a folder, which needs nothing that is
// Foundation's own. These throw as FileAttempt does.
class FoundationFileSystem : public FileSystem {
 public:
  std::string homeFolder() override;
  Bytes read(const std::string& path) override;
  bool holds(const std::string& path, const Bytes& expected) override;
  std::vector<FileEntry> filesIn(const std::string& path) override;
  void createFolder(const std::string& path, unsigned mode) override;
  void writeNew(const std::string& path, const Bytes& bytes) override;
  void setMode(const std::string& path, unsigned mode) override;
  void writeAtomically(const std::string& path, const Bytes& bytes) override;
  bool replaceIfHolds(const std::string& path, const Bytes& expected, const Bytes& bytes) override;
};
