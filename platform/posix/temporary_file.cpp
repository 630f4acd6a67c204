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

constexpr std::string_view hiddenName = ".quillery-";
constexpr std::string_view uniquePart = "XXXXXX";  // which the system fills in

bool isTemporaryName(std::string_view name) {
  return name.starts_with(hiddenName) && name.size() == hiddenName.size() + uniquePart.size();
}

// Removes a temporary file unless a process that is still there has it locked.
void removeIfAbandoned(const std::string& path) {
  const FileDescriptor file(
      uninterrupted([&] { return open(path.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC); }));
  struct stat status {};
  if (!file.isOpen() || fstat(file.get(), &status) != 0 || !S_ISREG(status.st_mode)) return;
  if (flock(file.get(), LOCK_EX | LOCK_NB) == 0) unlink(path.c_str());
}

// What cannot be removed stays, and is no reason not to write.
void removeAbandoned(const std::string& folder) {
  const std::unique_ptr<DIR, int (*)(DIR*)> entries(opendir(folder.c_str()), closedir);
  if (!entries) return;
  while (const dirent* entry = readdir(entries.get()))
    if (isTemporaryName(entry->d_name)) removeIfAbandoned(folder + "/" + entry->d_name);
}

// Whether the file has kept its name until it was locked: another process that looks for abandoned files may have been
// faster. A file system that knows no locks is no hindrance; at worst a file is missing when it is to be renamed.
bool lock(const FileDescriptor& file) {
  uninterrupted([&] { return flock(file.get(), LOCK_EX); });
  struct stat status {};
  return fstat(file.get(), &status) != 0 || status.st_nlink > 0;
}

int renameWithoutReplacing(const std::string& from, const std::string& to) {
#ifdef __APPLE__
  const int result = renamex_np(from.c_str(), to.c_str(), RENAME_EXCL);
#else
  const int result = renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), RENAME_NOREPLACE);
#endif
  if (result == 0 || (errno != EINVAL && errno != ENOSYS && errno != ENOTSUP)) return result;
  // Not every file system can do that at once; on those a second name does not replace anything either.
  if (link(from.c_str(), to.c_str()) != 0) return -1;
  unlink(from.c_str());
  return 0;
}

}  // namespace

TemporaryFile::TemporaryFile(const std::string& folder, const FileAttempt& attempt) : descriptor_(-1) {
  removeAbandoned(folder);
  do {
    path_ = folder + "/" + std::string(hiddenName) + std::string(uniquePart);
    descriptor_ = FileDescriptor(uninterrupted([&] { return mkostemp(path_.data(), O_CLOEXEC); }));
    if (!descriptor_.isOpen()) throw attempt.failure(errno);
  } while (!lock(descriptor_));
}

TemporaryFile::~TemporaryFile() {
  if (!path_.empty()) unlink(path_.c_str());
}

int TemporaryFile::replace(const std::string& path) { return named(std::rename(path_.c_str(), path.c_str())); }

int TemporaryFile::nameAnew(const std::string& path) { return named(renameWithoutReplacing(path_, path)); }

int TemporaryFile::named(int result) {
  if (result != 0) return errno;
  path_.clear();
  return 0;
}
