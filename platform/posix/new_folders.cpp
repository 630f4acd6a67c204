#include "platform/posix/new_folders.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "platform/posix/file_attempt.h"
#include "platform/posix/file_attributes.h"
#include "platform/posix/file_mode.h"

namespace {

constexpr mode_t usualFolderMode = 0777;

FileAttempt creating(const std::string& path) { return {"folder", path, "created"}; }

bool isFolder(const std::string& path) {
  struct stat status {};
  return stat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode);
}

// Completes a new folder: sets the permission bits if the umask or the parent changed them, and the owner. Follows no
// symbolic link that an attacker may have put in its place. Returns 0 or the error number.
int complete(const std::string& path, const std::string& parent, std::optional<mode_t> mode, Flush flush) {
  struct stat status {};
  if (lstat(path.c_str(), &status) != 0) return errno;
  const bool differs = mode && (status.st_mode & permissionBits) != *mode;
  if (differs && fchmodat(AT_FDCWD, path.c_str(), *mode, AT_SYMLINK_NOFOLLOW) != 0) return errno;
  const std::optional<Ownership> owner = ownershipIn(parent);
  if (owner && lchown(path.c_str(), owner->user, owner->group) != 0) return errno;
  return flushFolder(parent, flush);
}

// Creates one folder. Returns false if its parent is missing.
bool createOne(const std::string& path, std::optional<mode_t> mode, Flush flush) {
  const std::string parent = parentOf(path);
  if (mkdir(path.c_str(), mode.value_or(usualFolderMode)) != 0) {
    const int problem = errno;
    if (problem == EEXIST && isFolder(path)) return true;  // another process has just created it
    if (problem == ENOENT) return false;
    throw creating(path).failure(problem);
  }
  const int problem = complete(path, parent, mode, flush);
  if (problem == 0) return true;
  rmdir(path.c_str());
  throw creating(path).failure(problem);
}

void createWithParents(const std::string& path, std::optional<mode_t> mode, Flush flush) {
  if (isFolder(path) || createOne(path, mode, flush)) return;
  const std::string parent = parentOf(path);
  if (parent == path || parent == ".") throw creating(path).failure(ENOENT);
  createWithParents(parent, mode, flush);
  if (!createOne(path, mode, flush)) throw creating(path).failure(ENOENT);
}

}  // namespace

void createFolders(const std::string& path, std::optional<mode_t> mode, Flush flush) {
  const std::size_t end = path.find_last_not_of('/');
  createWithParents(end == path.npos ? path : path.substr(0, end + 1), mode, flush);
}
