#include "platform/posix/open_file.h"

#include <fcntl.h>

#include <cerrno>
#include <utility>

std::optional<OpenFile> openIfPresent(const std::string& path, const FileAttempt& attempt) {
  // O_NONBLOCK, so that opening a pipe does not wait for a writer. It has no effect on a regular file.
  FileDescriptor file(uninterrupted([&] { return open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY); }));
  struct stat status {};
  if (!file.isOpen() && errno == ENOENT) return std::nullopt;
  if (!file.isOpen() || fstat(file.get(), &status) != 0) throw attempt.failure(errno);
  requireRegular(status, attempt);
  return OpenFile{std::move(file), status};
}

OpenFile openPresent(const std::string& path, const FileAttempt& attempt) {
  std::optional<OpenFile> file = openIfPresent(path, attempt);
  if (!file) throw attempt.failure(ENOENT);
  return std::move(*file);
}
