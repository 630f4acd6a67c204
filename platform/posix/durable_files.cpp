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

namespace {

constexpr mode_t permissionBits = 07777;
constexpr mode_t ownerOnly = 0600;
constexpr mode_t usualMode = 0666;
constexpr int longestChainOfLinks = 40;  // as many as the kernel follows

// Where a mode has sixteen bits, arithmetic makes it an int.
mode_t common(mode_t a, mode_t b) { return static_cast<mode_t>(a & b); }

FileAttempt saving(const std::string& path) { return {"file", path, "saved"}; }

// A name that is taken off its file again unless it is kept.
class TentativeName {
 public:
  explicit TentativeName(std::string path) : path_(std::move(path)) {}
  ~TentativeName() {
    if (!kept_) unlink(path_.c_str());
  }
  TentativeName(const TentativeName&) = delete;
  TentativeName& operator=(const TentativeName&) = delete;

  const std::string& path() const { return path_; }
  void keep() { kept_ = true; }

 private:
  std::string path_;
  bool kept_ = false;
};

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

// Writes, flushes and closes: afterwards the file is as safe as the system can make it.
void fill(FileDescriptor file, const Bytes& bytes, Flush flush, const FileAttempt& attempt) {
  writeAll(file, bytes, attempt);
  if (flush == Flush::toDisk && flushDescriptor(file) != 0) throw attempt.failure(errno);
  if (!file.close()) throw attempt.failure(errno);
}

// Where a path leads once its last component is no symbolic link: to a file, or to where one may be made.
std::string followLinks(const std::string& path) {
  std::string place = path;
  for (int hop = 0; hop < longestChainOfLinks; ++hop) {
    std::error_code noLink;
    const std::filesystem::path next = std::filesystem::read_symlink(place, noLink);
    if (noLink) return place;
    place = (std::filesystem::path(place).parent_path() / next).string();
  }
  throw saving(path).failure(ELOOP);
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

}  // namespace

void writeNewFile(const std::string& path, const Bytes& bytes, Flush flush) {
  const FileAttempt attempt = saving(path);
  FileDescriptor file(uninterrupted(
      [&] { return open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, ownerOnly); }));
  if (!file.isOpen()) throw attempt.failure(errno);
  TentativeName name(path);
  fill(std::move(file), bytes, flush, attempt);
  if (const int problem = flushName(path, flush); problem != 0) throw attempt.failure(problem);
  name.keep();
}

void replaceFile(const std::string& path, const Bytes& bytes, mode_t modeIfNew, Flush flush) {
  const FileAttempt attempt = saving(path);
  const std::string target = followLinks(path);
  struct stat status {};
  const bool exists = stat(target.c_str(), &status) == 0;
  if (exists) requireRegular(status, attempt);

  std::string pattern = parentOf(target) + "/.quillery-XXXXXX";
  FileDescriptor file(uninterrupted([&] { return mkostemp(pattern.data(), O_CLOEXEC); }));
  if (!file.isOpen()) throw attempt.failure(errno);
  TentativeName temporary(pattern);
  takeOver(file, exists ? std::optional(status) : std::nullopt, common(modeIfNew, permissionBits), attempt);
  fill(std::move(file), bytes, flush, attempt);
  if (std::rename(temporary.path().c_str(), target.c_str()) != 0) throw attempt.failure(errno);
  temporary.keep();
  flushName(target, flush);
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
