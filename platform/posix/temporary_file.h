// A file that gets its final name only when it is complete.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "platform/posix/file_attempt.h"
#include "platform/posix/file_descriptor.h"

// A new file in a folder, which only its owner may read and write, whatever the umask. Where the system supports that,
// it has no name until it is complete, so a killed process leaves nothing. Elsewhere, and while it replaces another
// file, it has a unique hidden name that contains its own inode number. It is removed on destruction unless it was
// renamed. Its lock keeps other processes from removing it as abandoned.
class TemporaryFile {
 public:
  // Throws the errors of `attempt`.
  TemporaryFile(const std::string& folder, const FileAttempt& attempt);
  ~TemporaryFile();
  TemporaryFile(const TemporaryFile&) = delete;
  TemporaryFile& operator=(const TemporaryFile&) = delete;

  const FileDescriptor& descriptor() const { return descriptor_; }

  // Gives the file its hidden name if it has none yet, so that only the rename remains. Returns 0 or the error number.
  int prepareToReplace();
  // Renames the file to `path`, which must be in the same folder, and replaces any file of that name. Call
  // prepareToReplace first. Returns 0 or the error number. After an error the file is still temporary.
  int renameReplacing(const std::string& path);
  // Gives the file the name `path`, which must be in the same folder, but fails with EEXIST if anything of that name
  // exists, including a symbolic link. Returns like renameReplacing.
  int renameWithoutReplacing(const std::string& path);

 private:
  explicit TemporaryFile(std::string folder) : folder_(std::move(folder)), descriptor_(-1) {}
  bool createWithoutName();
  void createWithName(const FileAttempt& attempt);
  int finish(int result);

  std::string folder_;
  std::string path_;  // empty while the file has no name, and once it is renamed
  FileDescriptor descriptor_;
};

// Removes the temporary files that killed processes have left in a folder. Only a file that this program made can
// match: its name contains the file's own inode number, so no copy and no renamed file has such a name. It must also be
// a regular file with one link, belong to the current user (for the superuser, to the folder's owner), be locked by
// nobody, and not be one of `inUse` or a file that one of these links to. Ignores errors, because an abandoned file
// that cannot be removed must not prevent a save.
void removeAbandonedFrom(const std::string& folder, const std::vector<std::string>& inUse);
