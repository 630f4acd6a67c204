#include "platform/posix/durable_files.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <optional>
#include <system_error>
#include <utility>

#include "platform/posix/file_attempt.h"
#include "platform/posix/file_descriptor.h"
#include "platform/posix/temporary_file.h"

namespace {

constexpr mode_t permissionBits = 07777;
constexpr mode_t ownerOnly = 0600;
constexpr mode_t usualMode = 0666;
constexpr int longestChainOfLinks = 40;  // as many as the kernel follows

// Where a mode has sixteen bits, arithmetic makes it an int.
mode_t common(mode_t a, mode_t b) { return static_cast<mode_t>(a & b); }

FileAttempt saving(const std::string& path) { return {"file", path, "saved"}; }

// Answers 0 once the disk has what the descriptor stands for; else less, and errno is set.
int flushDescriptor(const FileDescriptor& descriptor) {
#ifdef F_FULLFSYNC
  // Here fsync leaves it to the disk when to write. Some file systems know only that.
  if (uninterrupted([&] { return fcntl(descriptor.get(), F_FULLFSYNC); }) == 0) return 0;
#endif
  return uninterrupted([&] { return fsync(descriptor.get()); });
}

void writeAll(const FileDescriptor& file, const Bytes& bytes, const FileAttempt& attempt) {
  std::size_t written = 0;
  while (written < bytes.size()) {
    const ssize_t count =
        uninterrupted([&] { return ::write(file.get(), bytes.data() + written, bytes.size() - written); });
    if (count < 0) throw attempt.failure(errno);
    if (count == 0) throw attempt.failure(EIO);
    written += static_cast<std::size_t>(count);
  }
}

// Writes and flushes: afterwards the file is as safe as the system can make it.
void fill(const FileDescriptor& file, const Bytes& bytes, Flush flush, const FileAttempt& attempt) {
  writeAll(file, bytes, attempt);
  if (flush == Flush::toDisk && flushDescriptor(file) != 0) throw attempt.failure(errno);
}

// Where a path leads once its last component is no symbolic link: to a file, or to where one may be made.
std::string followLinks(const std::string& path) {
  std::string place = path;
  for (int hop = 0; hop < longestChainOfLinks; ++hop) {
    std::error_code problem;
    const std::filesystem::path next = std::filesystem::read_symlink(place, problem);
    if (problem == std::errc::invalid_argument || problem == std::errc::no_such_file_or_directory) return place;
    if (problem) throw saving(path).failure(problem.value());
    place = (std::filesystem::path(place).parent_path() / next).string();
  }
  throw saving(path).failure(ELOOP);
}

// Whether a file is still the one that it was, unchanged: every change sets the time of the last one.
bool isSame(const struct stat& one, const struct stat& other) {
#ifdef __APPLE__
  const timespec& changed = one.st_ctimespec;
  const timespec& changedThen = other.st_ctimespec;
#else
  const timespec& changed = one.st_ctim;
  const timespec& changedThen = other.st_ctim;
#endif
  return one.st_dev == other.st_dev && one.st_ino == other.st_ino && changed.tv_sec == changedThen.tv_sec &&
         changed.tv_nsec == changedThen.tv_nsec;
}

// What is known of the file that is to be replaced; nothing if there is none.
std::optional<struct stat> statusOf(const std::string& path, const FileAttempt& attempt) {
  struct stat status {};
  if (stat(path.c_str(), &status) != 0) {
    if (errno == ENOENT) return std::nullopt;
    throw attempt.failure(errno);
  }
  requireRegular(status, attempt);
  return status;
}

// Whether a condition holds and the file at `path`, which it is about, stays in its place until that is known.
bool staysWhile(const std::function<bool()>& condition, const std::string& path, const FileAttempt& attempt) {
  const std::optional<struct stat> before = statusOf(path, attempt);
  if (!condition()) return false;
  const std::optional<struct stat> after = statusOf(path, attempt);
  return before && after && isSame(*before, *after);
}

// Gives a file that is about to replace another the other's owner, group and permission bits; `modeIfNew` if there is
// no other.
void takeOver(const FileDescriptor& file, const std::optional<struct stat>& replaced, mode_t modeIfNew,
              const FileAttempt& attempt) {
  if (replaced) {
    struct stat own {};
    if (fstat(file.get(), &own) != 0) throw attempt.failure(errno);
    const bool differs = own.st_uid != replaced->st_uid || own.st_gid != replaced->st_gid;
    // Only the superuser may give files away, so this may fail and then stays as it is.
    if (differs && fchown(file.get(), replaced->st_uid, replaced->st_gid) != 0) errno = 0;
  }
  const mode_t mode = replaced ? common(replaced->st_mode, permissionBits) : modeIfNew;
  if (fchmod(file.get(), mode) != 0) throw attempt.failure(errno);
}

// Puts a file that is whole in the place of the target. After that a failure to flush the folder is none.
void rename(TemporaryFile& file, const std::string& target, Flush flush, const FileAttempt& attempt) {
  if (const int problem = file.replace(target); problem != 0) throw attempt.failure(problem);
  flushName(target, flush);
}

}  // namespace

void writeNewFile(const std::string& path, const Bytes& bytes, Flush flush) {
  const FileAttempt attempt = saving(path);
  TemporaryFile file(parentOf(path), attempt);
  fill(file.descriptor(), bytes, flush, attempt);
  if (const int problem = file.nameAnew(path); problem != 0) throw attempt.failure(problem);
  if (const int problem = flushName(path, flush); problem != 0) {
    unlink(path.c_str());
    throw attempt.failure(problem);
  }
}

void replaceFile(const std::string& path, const Bytes& bytes, mode_t modeIfNew, Flush flush) {
  const FileAttempt attempt = saving(path);
  const std::string target = followLinks(path);
  const std::optional<struct stat> replaced = statusOf(target, attempt);
  TemporaryFile file(parentOf(target), attempt);
  takeOver(file.descriptor(), replaced, common(modeIfNew, permissionBits), attempt);
  fill(file.descriptor(), bytes, flush, attempt);
  rename(file, target, flush, attempt);
}

bool replaceFileIf(const std::string& path, const Bytes& bytes, const std::function<bool()>& isExpected, Flush flush) {
  const FileAttempt attempt = saving(path);
  const std::string target = followLinks(path);
  const std::optional<struct stat> replaced = statusOf(target, attempt);
  if (!replaced) throw attempt.failure(ENOENT);
  TemporaryFile file(parentOf(target), attempt);
  takeOver(file.descriptor(), replaced, ownerOnly, attempt);
  fill(file.descriptor(), bytes, flush, attempt);
  if (!staysWhile(isExpected, target, attempt)) return false;
  rename(file, target, flush, attempt);
  return true;
}

mode_t modeOfNewFiles() {
  const mode_t mask = umask(0077);  // the mask can be read only by changing it
  umask(mask);
  return common(usualMode, static_cast<mode_t>(~mask));
}

int flushName(const std::string& path, Flush flush) {
  if (flush == Flush::never) return 0;
  const std::string parent = parentOf(path);
  const FileDescriptor folder(uninterrupted([&] { return open(parent.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC); }));
  if (!folder.isOpen()) return errno == EACCES ? 0 : errno;
  if (flushDescriptor(folder) == 0) return 0;
  return errno == EINVAL || errno == ENOTSUP ? 0 : errno;
}

std::string parentOf(const std::string& path) {
  const std::string parent = std::filesystem::path(path).parent_path().string();
  return parent.empty() ? "." : parent;
}
