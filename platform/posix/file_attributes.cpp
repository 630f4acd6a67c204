#include "platform/posix/file_attributes.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <string_view>
#include <vector>
#ifdef __APPLE__
#include <copyfile.h>
#else
#include <sys/xattr.h>
#endif

#include "platform/posix/file_mode.h"

namespace {

struct stat statusOf(const FileDescriptor& file, const FileAttempt& attempt) {
  struct stat status {};
  if (fstat(file.get(), &status) != 0) throw attempt.failure(errno);
  return status;
}

// What of a file could be kept.
struct Kept {
  bool owner;
  bool group;
  bool all() const { return owner && group; }
};

// Only the superuser may change the owner, and only members of a group may give a file to it.
Kept copyOwnership(const struct stat& wanted, const FileDescriptor& file, const FileAttempt& attempt) {
  const struct stat own = statusOf(file, attempt);
  Kept kept{own.st_uid == wanted.st_uid, own.st_gid == wanted.st_gid};
  if (kept.all() || fchown(file.get(), wanted.st_uid, wanted.st_gid) == 0) return {true, true};
  if (!kept.group) kept.group = fchown(file.get(), static_cast<uid_t>(-1), wanted.st_gid) == 0;
  return kept;
}

// Returns the permission bits that give nobody more than before. A member of the new group was a member of the old one
// or not, and so is everybody else now; the old owner is now one of these.
mode_t modeThatOpensNothing(mode_t mode, Kept kept) {
  if (kept.all()) return masked(mode, permissionBits);
  const unsigned owner = (mode & S_IRWXU) >> 6;
  unsigned group = (mode & S_IRWXG) >> 3;
  unsigned others = mode & S_IRWXO;
  if (!kept.group) group = others = group & others;
  if (!kept.owner) {
    group &= owner;
    others &= owner;
  }
  return static_cast<mode_t>(owner << 6 | group << 3 | others);
}

#ifdef __APPLE__

// Returns true if the access control list is the same afterwards.
bool copyExtended(const FileDescriptor& from, const FileDescriptor& to, Kept kept, const FileAttempt&) {
  const copyfile_flags_t list = kept.all() ? COPYFILE_ACL : 0;
  return fcopyfile(from.get(), to.get(), nullptr, COPYFILE_XATTR | list) == 0 && kept.all();
}

#else

constexpr const char* accessControlList = "system.posix_acl_access";

// Returns true for an error that says that the system does not permit or support something.
bool isRefusal(int problem) {
  return problem == EPERM || problem == EACCES || problem == ENOTSUP || problem == EINVAL || problem == ENOSYS;
}

// Calls a system call that fills a buffer, first without a buffer to learn the size. Returns the content; absent if the
// system call fails.
template <class Call>
std::optional<std::vector<char>> filled(const Call& call) {
  std::vector<char> content;
  for (;;) {
    const ssize_t needed = call(content.data(), std::size_t{0});
    if (needed < 0) return std::nullopt;
    content.resize(static_cast<std::size_t>(needed));
    if (content.empty()) return content;
    const ssize_t size = call(content.data(), content.size());
    if (size >= 0) {
      content.resize(static_cast<std::size_t>(size));
      return content;
    }
    if (errno != ERANGE) return std::nullopt;  // else another process has just made it longer
  }
}

// Returns the names of a file's extended attributes.
std::vector<std::string> attributesOf(const FileDescriptor& file, const FileAttempt& attempt) {
  const auto list = filled([&](char* start, std::size_t size) { return flistxattr(file.get(), start, size); });
  if (!list && errno != ENOTSUP) throw attempt.failure(errno);
  std::vector<std::string> names;
  if (list)
    for (std::size_t start = 0; start < list->size(); start += names.back().size() + 1)
      names.emplace_back(list->data() + start);
  return names;
}

// Copies one attribute. Returns false if the system refuses that.
bool copyAttribute(const char* name, const FileDescriptor& from, const FileDescriptor& to, const FileAttempt& attempt) {
  const auto value = filled([&](char* start, std::size_t size) { return fgetxattr(from.get(), name, start, size); });
  if (value && fsetxattr(to.get(), name, value->data(), value->size(), 0) == 0) return true;
  if (isRefusal(errno)) return false;
  if (errno == ENODATA) return true;  // removed meanwhile
  throw attempt.failure(errno);
}

// Removes the access control list that a new file inherits from its folder. Returns false if the system refuses that.
bool removeInheritedList(const FileDescriptor& file, const FileAttempt& attempt) {
  if (fremovexattr(file.get(), accessControlList) == 0 || errno == ENODATA || errno == ENOTSUP) return true;
  if (isRefusal(errno)) return false;
  throw attempt.failure(errno);
}

// Attributes of "system." say who may do what. Those of "security." and "trusted." hold for the same owner only, and
// the kernel's own checksums of the content would be wrong.
enum class Purpose { access, data, trust, checksum };
Purpose purposeOf(std::string_view name) {
  if (name.starts_with("system.")) return Purpose::access;
  if (name == "security.ima" || name == "security.evm") return Purpose::checksum;
  return name.starts_with("user.") ? Purpose::data : Purpose::trust;
}

// Returns true if the permissions that the attributes give are the same afterwards.
bool copyExtended(const FileDescriptor& from, const FileDescriptor& to, Kept kept, const FileAttempt& attempt) {
  bool isSame = removeInheritedList(to, attempt);
  for (const std::string& name : attributesOf(from, attempt)) {
    const Purpose purpose = purposeOf(name);
    if (purpose == Purpose::checksum || (purpose != Purpose::data && !kept.all())) {
      isSame = isSame && purpose != Purpose::access;
    } else if (!copyAttribute(name.c_str(), from, to, attempt) && purpose == Purpose::access) {
      isSame = false;
    }
  }
  return isSame;
}

#endif

}  // namespace

void copyAttributes(const FileDescriptor& from, const FileDescriptor& to, const FileAttempt& attempt) {
  const struct stat wanted = statusOf(from, attempt);
  const Kept kept = copyOwnership(wanted, to, attempt);
  const bool isSame = copyExtended(from, to, kept, attempt);
  const mode_t mode = isSame ? modeThatOpensNothing(wanted.st_mode, kept) : masked(wanted.st_mode, S_IRWXU);
  if (fchmod(to.get(), mode) != 0) throw attempt.failure(errno);
}

std::optional<Ownership> ownershipIn(const std::string& folder) {
  struct stat status {};
  if (geteuid() != 0 || stat(folder.c_str(), &status) != 0) return std::nullopt;
  const bool isShared = (status.st_mode & S_ISVTX) != 0;  // as /tmp is, where everybody's files belong to their makers
  return status.st_uid == 0 || isShared ? std::nullopt : std::optional(Ownership{status.st_uid, status.st_gid});
}

int giveToOwnerOf(const std::string& folder, const FileDescriptor& file) {
  const std::optional<Ownership> owner = ownershipIn(folder);
  return owner ? fchown(file.get(), owner->user, owner->group) : 0;
}
