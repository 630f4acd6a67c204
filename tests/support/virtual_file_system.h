// Files in memory, each with its content and permission bits.
#pragma once

#include <map>
#include <string>
#include <vector>

#include "platform/file_system.h"
#include "tests/support/journal.h"

// Operations are noted as "read", "holds", "files in", "write new" and "write atomically" with the path, "create
// folder" and "set mode" with the path and the mode. What cannot be done fails as on a real system: a file that is
// missing, a name that exists, a folder that is not there, a file where a folder should be.
class VirtualFileSystem : public FileSystem {
 public:
  explicit VirtualFileSystem(Journal& journal);

  std::string homeFolder() override { return home_; }
  Bytes read(const std::string& path) override;
  bool holds(const std::string& path, const Bytes& expected) override;
  std::vector<FileEntry> filesIn(const std::string& path) override;
  void createFolder(const std::string& path, unsigned mode) override;
  void writeNew(const std::string& path, const Bytes& bytes) override;
  void setMode(const std::string& path, unsigned mode) override;
  void writeAtomically(const std::string& path, const Bytes& bytes) override;
  // Noted as what it is made of: "holds", and "write atomically" if it does.
  bool replaceIfHolds(const std::string& path, const Bytes& expected, const Bytes& bytes) override;

  // Makes an operation fail the `occurrence`-th time with an error number of the system (ENOSPC, EACCES, EIO).
  // A write that fails changes nothing.
  void failOn(const std::string& operation, int errorNumber, int occurrence = 1);

  // What a test does to the files itself, which nobody notes. Folders are made as needed.
  void put(const std::string& path, std::string content, unsigned mode = 0644);
  void remove(const std::string& path);
  void setModified(const std::string& path, Instant instant) { modified_[path] = instant; }
  const std::string& content(const std::string& path) const { return files_.at(path).content; }
  unsigned mode(const std::string& path) const;

  struct File {
    std::string content;
    unsigned mode;
    friend bool operator==(const File&, const File&) = default;
  };
  const std::map<std::string, File>& files() const { return files_; }
  // The folders with their permission bits.
  const std::map<std::string, unsigned>& folders() const { return folders_; }

 private:
  // Throws unless there is a folder to hold `path`.
  void requireParent(const std::string& operation, const std::string& path) const;
  // Notes the time of a change; each is a second after the one before.
  void touch(const std::string& path);

  Journal& journal_;
  std::string home_ = "/home/user";
  std::map<std::string, File> files_;
  std::map<std::string, Instant> modified_;
  int changes_ = 0;
  std::map<std::string, unsigned> folders_;
};
