#include "platform/linux/session/instance_lock.h"

#include <fcntl.h>
#include <sys/file.h>

#include <cerrno>

#include "platform/error.h"
#include "platform/linux/posix_file_system.h"
#include "platform/product.h"

namespace {

constexpr mode_t privateFolder = 0700;
constexpr mode_t privateFile = 0600;

FileDescriptor openLock(const std::string& folder) {
  try {
    PosixFileSystem().createFolder(folder, privateFolder);
  } catch (const Error&) {
    return FileDescriptor(-1);
  }
  const std::string path = folder + "/" + std::string(product::bundleIdentifier) + ".lock";
  return FileDescriptor(
      uninterrupted([&] { return open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, privateFile); }));
}

bool isTaken(const FileDescriptor& file) {
  return file.isOpen() && uninterrupted([&] { return flock(file.get(), LOCK_EX | LOCK_NB); }) != 0 &&
         errno == EWOULDBLOCK;
}

}  // namespace

InstanceLock::InstanceLock(const std::string& folder) : file_(openLock(folder)), isOurs_(!isTaken(file_)) {}
