#include "platform/linux/updates/private_file.h"

#include <fcntl.h>

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <system_error>

#include "platform/error.h"
#include "platform/linux/posix_file_system.h"
#include "platform/posix/file_attempt.h"
#include "platform/posix/new_folders.h"
#include "platform/posix/write_all.h"
#include "platform/product.h"
#include "values/byte_pieces.h"

namespace {

constexpr mode_t ownerOnly = 0700;
constexpr mode_t ownerReadsAndWrites = 0600;
constexpr mode_t ownerReads = 0400;
constexpr const char* folderPrefix = "update-";

void removeEarlierIn(const std::string& parent) {
  std::error_code ignored;
  for (const auto& entry : std::filesystem::directory_iterator(parent, ignored))
    if (entry.path().filename().string().starts_with(folderPrefix)) std::filesystem::remove_all(entry.path(), ignored);
}

std::string newFolderIn(const std::string& parent) {
  if (parent.empty()) throw Error("Updates", 2, "There is no home folder to download the update to.");
  createFolders(parent, ownerOnly, Flush::never);
  removeEarlierIn(parent);
  std::string path = parent + "/" + folderPrefix + "XXXXXX";
  if (mkdtemp(path.data()) == nullptr) throw FileAttempt{"folder", path, "created"}.failure(errno);
  return path;
}

FileDescriptor newFile(const std::string& path) {
  FileDescriptor file(uninterrupted(
      [&] { return open(path.c_str(), O_RDWR | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, ownerReadsAndWrites); }));
  if (!file.isOpen()) throw FileAttempt{"file", path, "created"}.failure(errno);
  return file;
}

bool isSame(const timespec& left, const timespec& right) {
  return left.tv_sec == right.tv_sec && left.tv_nsec == right.tv_nsec;
}

}  // namespace

PrivateFile::PrivateFile(const std::string& parent, const std::string& name)
    : folder_(newFolderIn(parent)), path_(folder_ + "/" + name), file_(newFile(path_)) {}

PrivateFile::~PrivateFile() {
  std::error_code ignored;
  if (!isKept_) std::filesystem::remove_all(folder_, ignored);
}

void PrivateFile::append(std::string_view bytes) {
  writeAll(file_, Bytes(std::string(bytes)), {"file", path_, "written"});
  size_ += bytes.size();
}

std::string PrivateFile::sealed() {
  const FileAttempt attempt{"file", path_, "read"};
  std::string content(size_, '\0');
  std::size_t length = 0;
  while (length < content.size()) {
    const ssize_t count = uninterrupted([&] {
      return pread(file_.get(), content.data() + length, content.size() - length, static_cast<off_t>(length));
    });
    if (count <= 0) throw attempt.failure(count < 0 ? errno : EIO);
    length += static_cast<std::size_t>(count);
  }
  if (fchmod(file_.get(), ownerReads) != 0 || fstat(file_.get(), &sealed_) != 0) throw attempt.failure(errno);
  return content;
}

bool PrivateFile::isUnchanged() const {
  struct stat status {};
  return lstat(path_.c_str(), &status) == 0 && S_ISREG(status.st_mode) && status.st_dev == sealed_.st_dev &&
         status.st_ino == sealed_.st_ino && status.st_size == sealed_.st_size &&
         isSame(status.st_mtim, sealed_.st_mtim) && isSame(status.st_ctim, sealed_.st_ctim);
}

std::string cacheFolder() {
  const char* configured = std::getenv("XDG_CACHE_HOME");
  const std::string name(product::bundleIdentifier);
  if (configured != nullptr && configured[0] == '/') return configured + ("/" + name);
  try {
    return PosixFileSystem().homeFolder() + "/.cache/" + name;
  } catch (const Error&) {
    return {};
  }
}
