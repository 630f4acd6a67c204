#include "platform/posix/temporary_file.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/random.h>
#include <sys/stat.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <charconv>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string_view>
#include <utility>

namespace {

constexpr std::string_view namePrefix = ".quillery-temporary-";
constexpr std::string_view uniquePart = "XXXXXX";  // the pattern that mkostemp replaces
constexpr std::size_t randomDigits = 32;
constexpr mode_t ownerOnly = 0600;

std::string hexadecimal(std::uint64_t number) {
  std::array<char, 16> digits{};
  const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), number, 16);
  return {digits.data(), end.ptr};
}

// Returns 32 random digits; the empty string if the system fails.
std::string randomName() {
  std::array<std::uint64_t, 2> numbers{};
  if (getentropy(numbers.data(), sizeof numbers) != 0) return {};
  std::string digits = hexadecimal(numbers[0]) + hexadecimal(numbers[1]);
  digits.insert(0, randomDigits - digits.size(), '0');
  return digits;
}

std::string endOfName(const struct stat& status) { return "-" + hexadecimal(status.st_ino); }

// Returns a new hidden path for a file; the empty string if the system fails.
std::string hiddenPath(const std::string& folder, const FileDescriptor& file) {
  struct stat status {};
  if (fstat(file.get(), &status) != 0) return {};
  const std::string random = randomName();
  return random.empty() ? random : folder + "/" + std::string(namePrefix) + random + endOfName(status);
}

// Returns true if only a temporary file of this program can have this name and status. A file of mkostemp's pattern is
// empty until it is renamed to its hidden path.
bool isTemporary(std::string_view name, const struct stat& status) {
  if (!name.starts_with(namePrefix)) return false;
  name.remove_prefix(namePrefix.size());
  if (name.size() == uniquePart.size()) return status.st_size == 0;
  return name.size() > randomDigits &&
         name.substr(0, randomDigits).find_first_not_of("0123456789abcdef") == std::string_view::npos &&
         name.substr(randomDigits) == endOfName(status);
}

bool isSameInode(const struct stat& one, const struct stat& other) {
  return one.st_dev == other.st_dev && one.st_ino == other.st_ino;
}

// Removes a temporary file unless a living process has it locked.
void removeIfAbandoned(const std::string& folder, const char* name, uid_t owner,
                       const std::vector<struct stat>& spared) {
  const std::string path = folder + "/" + name;
  const FileDescriptor file(
      uninterrupted([&] { return open(path.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC); }));
  struct stat status {};
  if (!file.isOpen() || fstat(file.get(), &status) != 0 || !S_ISREG(status.st_mode) || status.st_nlink != 1) return;
  if ((status.st_uid != geteuid() && status.st_uid != owner) || !isTemporary(name, status)) return;
  if (std::ranges::any_of(spared, [&](const struct stat& other) { return isSameInode(status, other); })) return;
  if (flock(file.get(), LOCK_EX | LOCK_NB) == 0) unlink(path.c_str());
}

// Returns true if the file is locked and still has its name. Until it was locked, another process may have removed it
// as abandoned. Errors are ignored: on a file system without locks the rename may then fail, which is reported.
bool lock(const FileDescriptor& file) {
  uninterrupted([&] { return flock(file.get(), LOCK_EX); });
  struct stat status {};
  return fstat(file.get(), &status) != 0 || status.st_nlink > 0;
}

#ifdef O_TMPFILE
// The path by which a file without a name can be linked.
std::string pathOfDescriptor(const FileDescriptor& file) { return "/proc/self/fd/" + std::to_string(file.get()); }
#endif

// Gives a file without a name its first name, unless anything has that name. Returns 0, or -1 and sets errno.
int linkDescriptor([[maybe_unused]] const FileDescriptor& file, [[maybe_unused]] const std::string& path) {
#ifdef O_TMPFILE
  return linkat(AT_FDCWD, pathOfDescriptor(file).c_str(), AT_FDCWD, path.c_str(), AT_SYMLINK_FOLLOW);
#else
  errno = ENOTSUP;
  return -1;
#endif
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

// Delegates, so that the destructor runs if this constructor throws.
TemporaryFile::TemporaryFile(const std::string& folder, const FileAttempt& attempt) : TemporaryFile(folder) {
  if (!createWithoutName()) createWithName(attempt);
}

TemporaryFile::~TemporaryFile() {
  if (!path_.empty()) unlink(path_.c_str());
}

// Returns false if the system or the folder's file system does not support this, or if it fails for any other reason,
// for which createWithName then fails too.
bool TemporaryFile::createWithoutName() {
#ifdef O_TMPFILE
  descriptor_ =
      FileDescriptor(uninterrupted([&] { return open(folder_.c_str(), O_TMPFILE | O_RDWR | O_CLOEXEC, ownerOnly); }));
  // Without /proc it could never get a name.
  if (!descriptor_.isOpen() || access(pathOfDescriptor(descriptor_).c_str(), F_OK) != 0) return false;
  lock(descriptor_);
  return fchmod(descriptor_.get(), ownerOnly) == 0;
#else
  return false;
#endif
}

void TemporaryFile::createWithName(const FileAttempt& attempt) {
  do {
    path_ = folder_ + "/" + std::string(namePrefix) + std::string(uniquePart);
    descriptor_ = FileDescriptor(uninterrupted([&] { return mkostemp(path_.data(), O_CLOEXEC); }));
    if (!descriptor_.isOpen()) {
      const int problem = errno;
      path_.clear();
      throw attempt.failure(problem);
    }
  } while (!lock(descriptor_));
  std::string hidden = hiddenPath(folder_, descriptor_);
  if (hidden.empty() || fchmod(descriptor_.get(), ownerOnly) != 0 || std::rename(path_.c_str(), hidden.c_str()) != 0)
    throw attempt.failure(errno);
  path_ = std::move(hidden);
}

int TemporaryFile::prepareToReplace() {
  if (!path_.empty()) return 0;
  std::string hidden = hiddenPath(folder_, descriptor_);
  if (hidden.empty() || linkDescriptor(descriptor_, hidden) != 0) return errno;
  path_ = std::move(hidden);
  return 0;
}

int TemporaryFile::renameReplacing(const std::string& path) { return finish(std::rename(path_.c_str(), path.c_str())); }

int TemporaryFile::renameWithoutReplacing(const std::string& path) {
  return finish(path_.empty() ? linkDescriptor(descriptor_, path) : renameUnlessPresent(path_, path));
}

int TemporaryFile::finish(int result) {
  if (result != 0) return errno;
  path_.clear();
  return 0;
}

void removeAbandonedFrom(const std::string& folder, const std::vector<std::string>& inUse) {
  const std::unique_ptr<DIR, int (*)(DIR*)> entries(opendir(folder.c_str()), closedir);
  struct stat own {};
  if (!entries || stat(folder.c_str(), &own) != 0) return;
  std::vector<struct stat> spared;
  for (const std::string& path : inUse)
    if (struct stat status{}; stat(path.c_str(), &status) == 0) spared.push_back(status);
  const uid_t owner = geteuid() == 0 ? own.st_uid : geteuid();
  while (const dirent* entry = readdir(entries.get()))
    if (std::string_view(entry->d_name).starts_with(namePrefix))
      removeIfAbandoned(folder, entry->d_name, owner, spared);
}
