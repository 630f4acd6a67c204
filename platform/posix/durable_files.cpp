#include "platform/posix/durable_files.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <optional>
#include <system_error>
#include <utility>
#include <vector>

#include "platform/posix/file_attempt.h"
#include "platform/posix/file_attributes.h"
#include "platform/posix/file_descriptor.h"
#include "platform/posix/file_mode.h"
#include "platform/posix/open_file.h"
#include "platform/posix/temporary_file.h"
#include "platform/posix/write_all.h"

namespace {

constexpr mode_t usualFileMode = 0666;
constexpr std::size_t blockSize = std::size_t{256} << 10;
constexpr int maximumLinks = 40;  // as many as Linux follows when it opens a file

FileAttempt saving(const std::string& path) { return {"file", path, "saved"}; }

// Returns 0 once the file or folder is on disk. Returns a negative number and sets errno on failure.
int flushDescriptor(const FileDescriptor& descriptor) {
#ifdef F_FULLFSYNC
  // On macOS fsync does not empty the disk's own cache. Some file systems support nothing else.
  if (uninterrupted([&] { return fcntl(descriptor.get(), F_FULLFSYNC); }) == 0) return 0;
#endif
  return uninterrupted([&] { return fsync(descriptor.get()); });
}

void flush(const FileDescriptor& file, Flush flush, const FileAttempt& attempt) {
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

// Compares the content of open files with expected bytes. Has its memory from the start, so that a comparison cannot
// fail because memory has run out.
class Comparison {
 public:
  explicit Comparison(const Bytes& expected) : expected_(expected), buffer_(blockSize) {}

  // Returns true if the whole content is as expected. Reads no further than the first difference.
  bool holds(const FileDescriptor& file, const FileAttempt& attempt) {
    std::size_t compared = 0;
    while (const std::size_t count = readAt(file, compared, attempt)) {
      if (count > expected_.size() - compared) return false;
      if (std::memcmp(buffer_.data(), expected_.data() + compared, count) != 0) return false;
      compared += count;
    }
    return compared == expected_.size();
  }

  // Returns the whole content, up to the size that the file has at the start.
  Bytes contentOf(const FileDescriptor& file, const FileAttempt& attempt) {
    struct stat status {};
    if (fstat(file.get(), &status) != 0) throw attempt.failure(errno);
    const auto size = static_cast<std::size_t>(status.st_size);
    std::string content;
    content.reserve(size);
    while (content.size() < size) {
      const std::size_t count = readAt(file, content.size(), attempt);
      if (count == 0) break;
      content.append(buffer_.data(), std::min(count, size - content.size()));
    }
    return Bytes(std::move(content));
  }

 private:
  // Reads a block. Returns its size, which is 0 at the end of the file.
  std::size_t readAt(const FileDescriptor& file, std::size_t offset, const FileAttempt& attempt) {
    const ssize_t count =
        uninterrupted([&] { return pread(file.get(), buffer_.data(), buffer_.size(), static_cast<off_t>(offset)); });
    if (count < 0) throw attempt.failure(errno);
    return static_cast<std::size_t>(count);
  }

  const Bytes& expected_;
  std::vector<char> buffer_;
};

// Returns true if the file at `path` is still this one, unchanged.
bool isUnchanged(const OpenFile& file, const std::string& path) {
  struct stat now {};
  return stat(path.c_str(), &now) == 0 && isSameFile(file.status, now);
}

// Writes the content of a file that replaces `replaced`, if there is one. Its attributes come last, because they may
// make it accessible to others and because a write removes some.
void fill(const TemporaryFile& file, const BytePieces& bytes, const std::optional<OpenFile>& replaced, mode_t modeIfNew,
          const FileAttempt& attempt) {
  writeAll(file.descriptor(), bytes, attempt);
  if (replaced)
    copyAttributes(replaced->descriptor, file.descriptor(), attempt);
  else if (fchmod(file.descriptor().get(), modeIfNew) != 0)
    throw attempt.failure(errno);
}

// Renames a complete file over the target. A failure to flush the folder afterwards is ignored; see replaceFile. Needs
// no memory once the rename has succeeded.
void rename(TemporaryFile& file, const std::string& target, Flush flush, const FileAttempt& attempt) {
  const std::string folder = parentOf(target);
  if (const int problem = file.renameReplacing(target); problem != 0) throw attempt.failure(problem);
  flushFolder(folder, flush);
}

// Looks at a file that was just replaced: a program that had it open may have written to it after the comparison.
Replacement lookAgain(const FileDescriptor& replaced, Comparison& comparison, const FileAttempt& attempt) noexcept {
  Replacement result{true, false, std::nullopt};
  try {
    result.changedLate = !comparison.holds(replaced, attempt);
    if (result.changedLate) result.lateBytes = comparison.contentOf(replaced, attempt);
  } catch (...) {
    return result;  // the file is replaced, so nothing may be reported as a failure
  }
  return result;
}

}  // namespace

void writeNewFile(const std::string& path, const Bytes& bytes, Flush flush) {
  const FileAttempt attempt = saving(path);
  const std::string folder = parentOf(path);
  TemporaryFile file(folder, attempt);
  if (giveToOwnerOf(folder, file.descriptor()) != 0) throw attempt.failure(errno);
  writeAll(file.descriptor(), bytes, attempt);
  ::flush(file.descriptor(), flush, attempt);
  if (const int problem = file.renameWithoutReplacing(path); problem != 0) throw attempt.failure(problem);
  if (const int problem = flushFolder(folder, flush); problem != 0) {
    unlink(path.c_str());
    throw attempt.failure(problem);
  }
}

void replaceFile(const std::string& path, const Bytes& bytes, mode_t modeIfNew, Flush flush) {
  const FileAttempt attempt = saving(path);
  const std::string target = followLinks(path);
  const std::string folder = parentOf(target);
  removeAbandonedFrom(folder, {target});
  const std::optional<OpenFile> replaced = openIfPresent(target, attempt);
  TemporaryFile file(folder, attempt);
  if (!replaced && giveToOwnerOf(folder, file.descriptor()) != 0) throw attempt.failure(errno);
  fill(file, bytes, replaced, masked(modeIfNew, permissionBits), attempt);
  ::flush(file.descriptor(), flush, attempt);
  if (const int problem = file.prepareToReplace(); problem != 0) throw attempt.failure(problem);
  rename(file, target, flush, attempt);
}

Replacement replaceFileIf(const std::string& path, const Bytes& expected, const BytePieces& bytes,
                          const std::function<bool()>& mayReplace, Flush flush) {
  const FileAttempt attempt = saving(path);
  const FileAttempt opening{"file", path, "opened"};
  const std::string target = followLinks(path);
  const std::optional<OpenFile> replaced = openPresent(target, attempt);
  TemporaryFile file(parentOf(target), attempt);
  fill(file, bytes, replaced, 0, attempt);
  ::flush(file.descriptor(), flush, attempt);

  if (!mayReplace()) return {};
  const OpenFile checked = openPresent(target, opening);
  if (!isSameFile(checked.status, replaced->status)) {  // it may have other attributes now
    copyAttributes(checked.descriptor, file.descriptor(), attempt);
    ::flush(file.descriptor(), flush, attempt);
  }
  Comparison comparison(expected);
  if (!comparison.holds(checked.descriptor, opening)) return {};
  if (const int problem = file.prepareToReplace(); problem != 0) throw attempt.failure(problem);
  if (!isUnchanged(checked, target)) return {};
  rename(file, target, flush, attempt);
  return lookAgain(checked.descriptor, comparison, opening);
}

void removeFilesAbandonedBeside(const std::string& path, const std::vector<std::string>& inUse) {
  try {
    const std::string target = followLinks(path);
    std::vector<std::string> spared = inUse;
    spared.push_back(target);
    removeAbandonedFrom(parentOf(target), spared);
  } catch (const std::exception&) {
    return;  // such as a cycle of links, which the job reports
  }
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
  return masked(usualFileMode, static_cast<mode_t>(~mask));
}

int flushFolder(const std::string& path, Flush flush) {
  if (flush == Flush::never) return 0;
  const FileDescriptor folder(uninterrupted([&] { return open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC); }));
  if (!folder.isOpen()) return errno == EACCES ? 0 : errno;
  if (flushDescriptor(folder) == 0) return 0;
  return errno == EINVAL || errno == ENOTSUP ? 0 : errno;
}

std::string parentOf(const std::string& path) {
  const std::string parent = std::filesystem::path(path).parent_path().string();
  return parent.empty() ? "." : parent;
}
