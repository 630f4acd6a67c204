#include "platform/linux/posix_file_system.h"

#include <fcntl.h>
#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <optional>
#include <system_error>
#include <utility>
#include <vector>

#include "platform/error.h"
#include "platform/linux/file_descriptor.h"
#include "platform/linux/plist/large_memory.h"

namespace {

constexpr const char* errorDomain = "POSIX";
constexpr mode_t permissionBits = 07777;
constexpr mode_t ownerOnly = 0600;
constexpr mode_t newFileMode = 0666;
constexpr std::size_t comparedAtOnce = std::size_t{256} << 10;
constexpr int longestChainOfLinks = 40;  // as many as the kernel follows

// What was being done, for the sentence that says it failed: "The file “a” couldn’t be opened because …".
struct Attempt {
  const char* kind;
  const std::string& path;
  const char* verb;

  // `reason` in our words, complete as it stands after "because".
  Error failure(int code, const std::string& reason) const {
    const std::string name = std::filesystem::path(path).filename().string();
    return {errorDomain, code,
            std::string("The ") + kind + " “" + (name.empty() ? path : name) + "” couldn’t be " + verb + " because " +
                reason + " (" + path + ")."};
  }
  Error failure(int code) const {
    return failure(code, "the system answered “" + std::generic_category().message(code) + "”");
  }
};

Attempt opening(const std::string& path) { return {"file", path, "opened"}; }
Attempt saving(const std::string& path) { return {"file", path, "saved"}; }
Attempt creatingFolder(const std::string& path) { return {"folder", path, "created"}; }

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

std::string parentOf(const std::string& path) {
  const std::string parent = std::filesystem::path(path).parent_path().string();
  return parent.empty() ? "." : parent;
}

std::optional<struct stat> statusOf(const std::string& path) {
  struct stat status {};
  return stat(path.c_str(), &status) == 0 ? std::optional(status) : std::nullopt;
}

void requireRegular(const struct stat& status, const Attempt& attempt) {
  if (S_ISDIR(status.st_mode)) throw attempt.failure(EISDIR);
  if (!S_ISREG(status.st_mode)) throw attempt.failure(EINVAL, "it is not a regular file");
}

// An open regular file and its size as the system has it now.
struct OpenFile {
  FileDescriptor descriptor;
  std::size_t size;
};

OpenFile openForReading(const std::string& path) {
  // Not blocking: opening a pipe must not wait for somebody to write to it. A regular file does not mind.
  FileDescriptor file(uninterrupted([&] { return open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY); }));
  struct stat status {};
  if (!file.isOpen() || fstat(file.get(), &status) != 0) throw opening(path).failure(errno);
  requireRegular(status, opening(path));
  return {std::move(file), static_cast<std::size_t>(status.st_size)};
}

// Up to `size` bytes; 0 at the end of the file.
std::size_t readSome(const FileDescriptor& file, std::byte* start, std::size_t size, const std::string& path) {
  const ssize_t count = uninterrupted([&] { return ::read(file.get(), start, size); });
  if (count < 0) throw opening(path).failure(errno);
  return static_cast<std::size_t>(count);
}

void writeAll(const FileDescriptor& file, const Bytes& bytes, const Attempt& attempt) {
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
void fill(FileDescriptor file, const Bytes& bytes, Flush flush, const Attempt& attempt) {
  writeAll(file, bytes, attempt);
  if (flush == Flush::toDisk && uninterrupted([&] { return fsync(file.get()); }) != 0) throw attempt.failure(errno);
  if (!file.close()) throw attempt.failure(errno);
}

// Makes the names in a folder last; answers the error number, 0 if all is well. A folder that may not be read, or
// a file system that flushes no folders, is no failure: there is nothing better to be had.
int flushFolder(const std::string& path, Flush flush) {
  if (flush == Flush::never) return 0;
  const FileDescriptor folder(uninterrupted([&] { return open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC); }));
  if (!folder.isOpen()) return errno == EACCES ? 0 : errno;
  if (uninterrupted([&] { return fsync(folder.get()); }) == 0) return 0;
  return errno == EINVAL || errno == ENOTSUP ? 0 : errno;
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

mode_t modeOfNewFiles() {
  const mode_t mask = umask(0077);  // the mask can be read only by changing it
  umask(mask);
  return newFileMode & ~mask;
}

// Gives a file that is about to replace another the other's owner, group and permission bits; `modeIfNew` if there is
// no other.
void takeOver(const FileDescriptor& file, const std::optional<struct stat>& replaced, mode_t modeIfNew,
              const Attempt& attempt) {
  if (replaced) {
    struct stat own {};
    if (fstat(file.get(), &own) != 0) throw attempt.failure(errno);
    const bool differs = own.st_uid != replaced->st_uid || own.st_gid != replaced->st_gid;
    // Only the superuser may give files away, so this may fail and then stays as it is.
    if (differs && fchown(file.get(), replaced->st_uid, replaced->st_gid) != 0) errno = 0;
  }
  const mode_t mode = replaced ? replaced->st_mode & permissionBits : modeIfNew;
  if (fchmod(file.get(), mode) != 0) throw attempt.failure(errno);
}

bool isFolder(const std::string& path) {
  const auto status = statusOf(path);
  return status && S_ISDIR(status->st_mode);
}

// Creates one folder. Answers false if the folder above it is missing.
bool createOneFolder(const std::string& path, mode_t mode, Flush flush) {
  if (mkdir(path.c_str(), mode) != 0) {
    const int problem = errno;
    if (problem == EEXIST && isFolder(path)) return true;  // somebody else was faster
    if (problem == ENOENT) return false;
    throw creatingFolder(path).failure(problem);
  }
  int problem = chmod(path.c_str(), mode) == 0 ? 0 : errno;  // what the umask took away
  if (problem == 0) problem = flushFolder(parentOf(path), flush);
  if (problem == 0) return true;
  rmdir(path.c_str());
  throw creatingFolder(path).failure(problem);
}

void createFolders(const std::string& path, mode_t mode, Flush flush) {
  if (isFolder(path) || createOneFolder(path, mode, flush)) return;
  const std::string parent = parentOf(path);
  if (parent == path || parent == ".") throw creatingFolder(path).failure(ENOENT);
  createFolders(parent, mode, flush);
  if (!createOneFolder(path, mode, flush)) throw creatingFolder(path).failure(ENOENT);
}

std::string withoutSlashAtEnd(std::string path) {
  while (path.ends_with('/')) path.pop_back();
  return path;
}

std::string homeInUserDatabase() {
  std::vector<char> buffer(1024);
  struct passwd entry {};
  struct passwd* found = nullptr;
  int problem = 0;
  while ((problem = getpwuid_r(geteuid(), &entry, buffer.data(), buffer.size(), &found)) == ERANGE)
    buffer.resize(2 * buffer.size());
  if (found != nullptr && found->pw_dir != nullptr && found->pw_dir[0] == '/') return found->pw_dir;
  const std::string reason = problem != 0 ? "the system answered “" + std::generic_category().message(problem) + "”"
                                          : "the user database has none for user " + std::to_string(geteuid());
  throw Error(errorDomain, problem != 0 ? problem : ENOENT,
              "The home folder couldn’t be found because " + reason + ".");
}

}  // namespace

std::string PosixFileSystem::homeFolder() {
  const char* home = std::getenv("HOME");
  return withoutSlashAtEnd(home != nullptr && home[0] == '/' ? home : homeInUserDatabase());
}

Bytes PosixFileSystem::read(const std::string& path) {
  const OpenFile file = openForReading(path);
  LargeBuffer content(file.size + 1);  // room for one byte more: reading it finds the end
  while (const std::size_t count =
             readSome(file.descriptor, content.data() + content.size(), content.capacity() - content.size(), path)) {
    content.resize(content.size() + count);
    if (content.size() == content.capacity()) content.reserve(2 * content.capacity());
  }
  return std::move(content).take();
}

bool PosixFileSystem::holds(const std::string& path, const Bytes& expected) {
  const OpenFile file = openForReading(path);
  LargeBuffer buffer(comparedAtOnce);
  std::size_t compared = 0;
  while (const std::size_t count = readSome(file.descriptor, buffer.data(), comparedAtOnce, path)) {
    if (count > expected.size() - compared) return false;
    if (std::memcmp(buffer.data(), expected.data() + compared, count) != 0) return false;
    compared += count;
  }
  return compared == expected.size();
}

void PosixFileSystem::createFolder(const std::string& path, unsigned mode) {
  createFolders(withoutSlashAtEnd(path), static_cast<mode_t>(mode) & permissionBits, flush_);
}

void PosixFileSystem::writeNew(const std::string& path, const Bytes& bytes) {
  const Attempt attempt = saving(path);
  FileDescriptor file(uninterrupted(
      [&] { return open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, ownerOnly); }));
  if (!file.isOpen()) throw attempt.failure(errno);
  TentativeName name(path);
  fill(std::move(file), bytes, flush_, attempt);
  if (const int problem = flushFolder(parentOf(path), flush_); problem != 0) throw attempt.failure(problem);
  name.keep();
}

void PosixFileSystem::setMode(const std::string& path, unsigned mode) {
  if (chmod(path.c_str(), static_cast<mode_t>(mode) & permissionBits) != 0)
    throw Attempt{"file", path, "given its permissions"}.failure(errno);
}

void PosixFileSystem::writeAtomically(const std::string& path, const Bytes& bytes) {
  writeAtomically(path, bytes, modeOfNewFiles());
}

void PosixFileSystem::writeAtomically(const std::string& path, const Bytes& bytes, unsigned modeIfNew) {
  const Attempt attempt = saving(path);
  const std::string target = followLinks(path);
  const std::string folder = parentOf(target);
  const std::optional<struct stat> replaced = statusOf(target);
  if (replaced) requireRegular(*replaced, attempt);

  std::string pattern = folder + "/.quillery-XXXXXX";
  FileDescriptor file(uninterrupted([&] { return mkostemp(pattern.data(), O_CLOEXEC); }));
  if (!file.isOpen()) throw attempt.failure(errno);
  TentativeName temporary(pattern);
  takeOver(file, replaced, static_cast<mode_t>(modeIfNew) & permissionBits, attempt);
  fill(std::move(file), bytes, flush_, attempt);
  if (std::rename(temporary.path().c_str(), target.c_str()) != 0) throw attempt.failure(errno);
  temporary.keep();
  flushFolder(folder, flush_);
}
