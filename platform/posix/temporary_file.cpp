#include "platform/posix/temporary_file.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string_view>
#include <utility>

namespace {

constexpr std::string_view namePrefix = ".quillery-";
constexpr std::string_view uniquePart = "XXXXXX";  // the pattern that mkostemp replaces

bool isTemporaryName(std::string_view name) {
  return name.starts_with(namePrefix) && name.size() == namePrefix.size() + uniquePart.size();
}

// Removes a temporary file unless a living process has it locked.
void removeIfAbandoned(const std::string& path) {
  const FileDescriptor file(
      uninterrupted([&] { return open(path.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC); }));
  struct stat status {};
  if (!file.isOpen() || fstat(file.get(), &status) != 0 || !S_ISREG(status.st_mode)) return;
  if (flock(file.get(), LOCK_EX | LOCK_NB) == 0) unlink(path.c_str());
}

// Errors are ignored: an abandoned file that cannot be removed must not prevent a save.
void removeAbandonedFiles(const std::string& folder) {
  const std::unique_ptr<DIR, int (*)(DIR*)> entries(opendir(folder.c_str()), closedir);
  if (!entries) return;
  while (const dirent* entry = readdir(entries.get()))
    if (isTemporaryName(entry->d_name)) removeIfAbandoned(folder + "/" + entry->d_name);
}

// Returns true if the file is locked and still has its name. Until it was locked, another process may have removed it
// as abandoned. Errors are ignored: on a file system without locks the rename may then fail, which is reported.
bool lock(const FileDescriptor& file) {
  uninterrupted([&] { return flock(file.get(), LOCK_EX); });
  struct stat status {};
  return fstat(file.get(), &status) != 0 || status.st_nlink > 0;
}

int renameUnlessPresent(const std::string& from, const std::string& to) {
#ifdef __APPLE__
  const int result = renamex_np(from.c_str(), to.c_str(), RENAME_EXCL);
#else
  const int result = renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), RENAME_NOREPLACE);
#endif
  if (result == 0 || (errno != EINVAL && errno != ENOSYS && errno != ENOTSUP)) return result;
  // Not every file system supports this in one step. A hard link does not replace an existing file either.
  if (link(from.c_str(), to.c_str()) != 0) return -1;
  unlink(from.c_str());
  return 0;
}

}  // namespace

TemporaryFile::TemporaryFile(const std::string& folder, const FileAttempt& attempt) : descriptor_(-1) {
  removeAbandonedFiles(folder);
  do {
    path_ = folder + "/" + std::string(namePrefix) + std::string(uniquePart);
    descriptor_ = FileDescriptor(uninterrupted([&] { return mkostemp(path_.data(), O_CLOEXEC); }));
    if (!descriptor_.isOpen()) throw attempt.failure(errno);
  } while (!lock(descriptor_));
}

TemporaryFile::~TemporaryFile() {
  if (!path_.empty()) unlink(path_.c_str());
}

int TemporaryFile::renameReplacing(const std::string& path) { return finish(std::rename(path_.c_str(), path.c_str())); }

int TemporaryFile::renameWithoutReplacing(const std::string& path) { return finish(renameUnlessPresent(path_, path)); }

int TemporaryFile::finish(int result) {
  if (result != 0) return errno;
  path_.clear();
  return 0;
}
