// An in-memory file system.
#pragma once

#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "platform/file_system.h"
#include "tests/support/journal.h"

// Records "read", "holds", "files in", "write new", "write beside", "write atomically" and "remove abandoned" with the
// path, and "create folder" and "set mode" with the path and the mode. Operations fail as on a real system: on a
// missing file, an existing name, a missing folder, or a file in the place of a folder.
class VirtualFileSystem : public FileSystem {
 public:
  explicit VirtualFileSystem(Journal& journal);

  std::string homeFolder() override { return home_; }
  // Not recorded. There are no symbolic links.
  std::string resolved(const std::string& path) override;
  Bytes read(const std::string& path) override;
  std::vector<FileEntry> filesIn(const std::string& path) override;
  void createFolder(const std::string& path, std::optional<unsigned> mode) override;
  void writeNew(const std::string& path, const Bytes& bytes) override;
  void setMode(const std::string& path, unsigned mode) override;
  void writeAtomically(const std::string& path, const Bytes& bytes) override;
  // Recorded as "write beside"; if the file may be replaced, "holds"; and if it has the expected bytes, "write
  // atomically".
  Replacement replaceIfHolds(const std::string& path, const Bytes& expected, const BytePieces& bytes,
                             const std::function<bool()>& mayReplace) override;
  void removeAbandonedFiles(const std::string& path, const std::vector<std::string>& inUse) override;

  // Makes the `occurrence`-th operation of this name fail with a system error number (ENOSPC, EACCES, EIO). A failed
  // write changes nothing.
  void failOn(const std::string& operation, int errorNumber, int occurrence = 1);

  // Lets another program, which had the file open, write to it just after replaceIfHolds has compared it. If it cannot
  // be read afterwards, `content` is absent.
  void willChangeLate(std::optional<std::string> content) { lateContent_ = std::move(content), changesLate_ = true; }

  // Changes that a test makes itself. They are not recorded, and create folders as needed.
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
  // The first step of replaceIfHolds.
  bool holds(const std::string& path, const Bytes& expected);
  // Throws if the folder of `path` does not exist.
  void requireParent(const std::string& operation, const std::string& path) const;
  // Sets the modification time of a file; each change is one second after the previous one.
  void touch(const std::string& path);

  Journal& journal_;
  std::string home_ = "/home/user";
  std::map<std::string, File> files_;
  std::map<std::string, Instant> modified_;
  int changes_ = 0;
  bool changesLate_ = false;
  std::optional<std::string> lateContent_;
  std::map<std::string, unsigned> folders_;
};
