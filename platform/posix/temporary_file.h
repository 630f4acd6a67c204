// A file that gets its name only when it is whole.
#pragma once

#include <string>

#include "platform/posix/file_attempt.h"
#include "platform/posix/file_descriptor.h"

// A new file in a folder, readable for its owner only, under a hidden name of its own; removed again unless it is given
// another name. For as long as it is here it is locked, so that no other process takes it for an abandoned one.
class TemporaryFile {
 public:
  // Before it makes the file it removes those that were abandoned in the folder: when a process is killed or the power
  // fails, nobody else does. Throws the errors of `attempt`.
  TemporaryFile(const std::string& folder, const FileAttempt& attempt);
  ~TemporaryFile();
  TemporaryFile(const TemporaryFile&) = delete;
  TemporaryFile& operator=(const TemporaryFile&) = delete;

  const FileDescriptor& descriptor() const { return descriptor_; }

  // Both answer 0, or the error number if the system refuses; then the file is still a temporary one.

  // Gives it the name `path` in the same folder, in place of what has that name.
  int replace(const std::string& path);
  // The same, but fails with EEXIST if anything of that name exists, a symbolic link included.
  int nameAnew(const std::string& path);

 private:
  int named(int result);

  std::string path_;  // empty once it has its lasting name
  FileDescriptor descriptor_;
};
