// Who may do what with a file, and its extended attributes.
#pragma once

#include <sys/stat.h>
#include <sys/types.h>

#include <optional>
#include <string>

#include "platform/posix/file_attempt.h"
#include "platform/posix/file_descriptor.h"

// Gives a new file the owner, group, permission bits, access control list and extended attributes of the file that it
// will replace. What the system does not permit is left out, and then permissions are removed, so that nobody but the
// new file's owner has one that he did not have before: if the access control list is not the same for the same owner
// and group, all but the owner's. Throws the errors of `attempt` for all other failures, such as a full disk.
void copyAttributes(const FileDescriptor& from, const FileDescriptor& to, const FileAttempt& attempt);

// An owner and a group.
struct Ownership {
  uid_t user;
  gid_t group;
};

// Returns to whom a new file or folder in `folder` must belong: to the folder's owner and group, if the superuser
// creates it in another user's folder, because that user could not use it otherwise. Absent if the system chooses
// right.
std::optional<Ownership> ownershipIn(const std::string& folder);

// Gives a new file in `folder` to ownershipIn(folder). Returns 0, or -1 and sets errno.
int giveToOwnerOf(const std::string& folder, const FileDescriptor& file);
