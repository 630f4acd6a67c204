#include "tests/platform/linux/intercepted_calls.h"

#include <fcntl.h>
#include <sys/syscall.h>
#include <sys/types.h>
#include <unistd.h>

#include <cerrno>
#include <string_view>

namespace {

InterceptedCalls* intercepted = nullptr;

// Returns true if the call must fail, and sets errno.
template <class Handler, class... Arguments>
bool fails(Handler InterceptedCalls::*handler, Arguments... arguments) {
  if (intercepted == nullptr || !(intercepted->*handler)) return false;
  const int problem = (intercepted->*handler)(arguments...);
  if (problem != 0) errno = problem;
  return problem != 0;
}

}  // namespace

InterceptedCalls::InterceptedCalls() { intercepted = this; }
InterceptedCalls::~InterceptedCalls() { intercepted = nullptr; }

extern "C" int access(const char* path, int mode) noexcept {
  if (intercepted != nullptr && intercepted->noUnnamedFiles && std::string_view(path).starts_with("/proc/self/fd/")) {
    errno = ENOENT;
    return -1;
  }
  return static_cast<int>(syscall(SYS_faccessat, AT_FDCWD, path, mode));
}

extern "C" int linkat(int fromFolder, const char* from, int toFolder, const char* to, int flags) noexcept {
  if (fails(&InterceptedCalls::beforeLink)) return -1;
  return static_cast<int>(syscall(SYS_linkat, fromFolder, from, toFolder, to, flags));
}

extern "C" int rename(const char* from, const char* to) noexcept {
  if (fails(&InterceptedCalls::beforeRename)) return -1;
  return static_cast<int>(syscall(SYS_renameat2, AT_FDCWD, from, AT_FDCWD, to, 0));
}

extern "C" int fsetxattr(int file, const char* name, const void* value, std::size_t size, int flags) noexcept {
  if (fails(&InterceptedCalls::beforeSetAttribute, std::string(name))) return -1;
  return static_cast<int>(syscall(SYS_fsetxattr, file, name, value, size, flags));
}
