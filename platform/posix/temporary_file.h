// A file that gets its final name only when it is complete.
#pragma once

#include <string>

#include "platform/posix/file_attempt.h"
#include "platform/posix/file_descriptor.h"

// A new file under a unique hidden name, which only its owner may read and write. It is removed on destruction unless
// it was renamed. Its lock keeps other processes from removing it as abandoned.
class TemporaryFile {
 public:
  // First removes the temporary files that killed processes have left in the folder, because nothing else does. Throws
  // the errors of `attempt`.
  TemporaryFile(const std::string& folder, const FileAttempt& attempt);
  ~TemporaryFile();
  TemporaryFile(const TemporaryFile&) = delete;
  TemporaryFile& operator=(const TemporaryFile&) = delete;

  const FileDescriptor& descriptor() const { return descriptor_; }

  // Renames the file to `path`, which must be in the same folder, and replaces any file of that name. Returns 0 or the
  // error number. After an error the file is still temporary.
  int renameReplacing(const std::string& path);
  // Does the same, but fails with EEXIST if anything of that name exists, including a symbolic link.
  int renameWithoutReplacing(const std::string& path);

 private:
  int finish(int result);

  std::string path_;  // empty once the file is renamed
  FileDescriptor descriptor_;
};
