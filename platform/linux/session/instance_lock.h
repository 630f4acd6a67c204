// One instance of the program where no session bus knows the instances.
#pragma once

#include <string>

#include "platform/posix/file_descriptor.h"

// Holds a lock on an empty file, which is never removed, as long as it lives. The system releases the lock when the
// process ends, however it ends.
class InstanceLock {
 public:
  // Tries to take the lock of this user's program in `folder`, which is created if missing.
  explicit InstanceLock(const std::string& folder);

  // Returns false if another instance has the lock. Returns true if the lock cannot be used: a second instance does
  // less harm than none.
  bool isOurs() const { return isOurs_; }

 private:
  FileDescriptor file_;
  bool isOurs_;
};
