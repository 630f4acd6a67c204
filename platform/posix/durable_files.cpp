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
constexpr int maximumLinks = 40;  // as many as Linux follows when it opens a file

// On macOS mode_t has 16 bits, so `&` returns an int.
mode_t masked(mode_t mode, mode_t mask) { return static_cast<mode_t>(mode & mask); }

FileAttempt saving(const std::string& path) { return {"file", path, "saved"}; }

// Returns 0 once the file or folder is on disk. Returns a negative number and sets errno on failure.
int flushDescriptor(const FileDescriptor& descriptor) {
#ifdef F_FULLFSYNC
  // On macOS fsync does not empty the disk's own cache. Some file systems support nothing else.
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

void writeAndFlush(const FileDescriptor& file, const Bytes& bytes, Flush flush, const FileAttempt& attempt) {
  writeAll(file, bytes, attempt);
  if (flush == Flush::toDisk && flushDescriptor(file) != 0) throw attempt.failure(errno);
}

// Returns the path of the file that a chain of symbolic links leads to. That file may not exist.
std::string followLinks(const std::string& path) {
  std::string target = path;
  for (int links = 0; links <= maximumLinks; ++links) {
    std::error_code problem;
    const std::filesystem::path next = std::filesystem::read_symlink(target, problem);
    if (problem == std::errc::invalid_argument || problem == std::errc::no_such_file_or_directory) return target;
    if (problem) throw saving(path).failure(problem.value());
    target = (std::filesystem::path(target).parent_path() / next).string();
  }
  throw saving(path).failure(ELOOP);
}

// Returns the status of a regular file; absent if it does not exist.
std::optional<struct stat> statusOf(const std::string& path, const FileAttempt& attempt) {
  struct stat status {};
  if (stat(path.c_str(), &status) != 0) {
    if (errno == ENOENT) return std::nullopt;
    throw attempt.failure(errno);
  }
  requireRegular(status, attempt);
  return status;
}

// Returns true if `condition` does and the file at `path` is neither changed nor replaced meanwhile.
bool isUnchangedDuring(const std::function<bool()>& condition, const std::string& path, const FileAttempt& attempt) {
  const std::optional<struct stat> before = statusOf(path, attempt);
  if (!condition()) return false;
  const std::optional<struct stat> after = statusOf(path, attempt);
  return before && after && isSameFile(*before, *after);
}

// Gives `file` the owner, group and permission bits of the file that it will replace; the permission bits `modeIfNew`
// if it replaces none.
void copyAttributes(const FileDescriptor& file, const std::optional<struct stat>& replaced, mode_t modeIfNew,
                    const FileAttempt& attempt) {
  if (replaced) {
    struct stat own {};
    if (fstat(file.get(), &own) != 0) throw attempt.failure(errno);
    const bool differs = own.st_uid != replaced->st_uid || own.st_gid != replaced->st_gid;
    // Only the superuser may change the owner. Otherwise the file keeps the owner and group that it has.
    if (differs && fchown(file.get(), replaced->st_uid, replaced->st_gid) != 0) errno = 0;
  }
  const mode_t mode = replaced ? masked(replaced->st_mode, permissionBits) : modeIfNew;
  if (fchmod(file.get(), mode) != 0) throw attempt.failure(errno);
}

// Renames a complete file over the target. A failure to flush the folder afterwards is ignored; see replaceFile.
void rename(TemporaryFile& file, const std::string& target, Flush flush, const FileAttempt& attempt) {
  if (const int problem = file.renameReplacing(target); problem != 0) throw attempt.failure(problem);
  flushName(target, flush);
}

}  // namespace

void writeNewFile(const std::string& path, const Bytes& bytes, Flush flush) {
  const FileAttempt attempt = saving(path);
  TemporaryFile file(parentOf(path), attempt);
  writeAndFlush(file.descriptor(), bytes, flush, attempt);
  if (const int problem = file.renameWithoutReplacing(path); problem != 0) throw attempt.failure(problem);
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
  copyAttributes(file.descriptor(), replaced, masked(modeIfNew, permissionBits), attempt);
  writeAndFlush(file.descriptor(), bytes, flush, attempt);
  rename(file, target, flush, attempt);
}

bool replaceFileIf(const std::string& path, const Bytes& bytes, const std::function<bool()>& isExpected, Flush flush) {
  const FileAttempt attempt = saving(path);
  const std::string target = followLinks(path);
  const std::optional<struct stat> replaced = statusOf(target, attempt);
  if (!replaced) throw attempt.failure(ENOENT);
  TemporaryFile file(parentOf(target), attempt);
  copyAttributes(file.descriptor(), replaced, ownerOnly, attempt);
  writeAndFlush(file.descriptor(), bytes, flush, attempt);
  if (!isUnchangedDuring(isExpected, target, attempt)) return false;
  rename(file, target, flush, attempt);
  return true;
}

bool isSameFile(const struct stat& one, const struct stat& other) {
#ifdef __APPLE__
  const timespec& changed = one.st_ctimespec;
  const timespec& otherChanged = other.st_ctimespec;
#else
  const timespec& changed = one.st_ctim;
  const timespec& otherChanged = other.st_ctim;
#endif
  return one.st_dev == other.st_dev && one.st_ino == other.st_ino && changed.tv_sec == otherChanged.tv_sec &&
         changed.tv_nsec == otherChanged.tv_nsec;
}

mode_t modeOfNewFiles() {
  const mode_t mask = umask(0077);  // there is no call that only reads it
  umask(mask);
  return masked(usualMode, static_cast<mode_t>(~mask));
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
