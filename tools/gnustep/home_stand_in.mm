// Stands for a user whose home folder is the one that HOME names: GNUstep takes it from the password file instead, and
// keeps its settings there.
#include <dlfcn.h>
#include <pwd.h>

#include <cstdlib>

extern "C" int getpwnam_r(const char* name, passwd* entry, char* buffer, size_t size, passwd** result) {
  using Function = int(const char*, passwd*, char*, size_t, passwd**);
  static auto* const real = reinterpret_cast<Function*>(dlsym(RTLD_NEXT, "getpwnam_r"));
  const int status = real(name, entry, buffer, size, result);
  char* const home = std::getenv("HOME");
  if (*result != nullptr && home != nullptr) (*result)->pw_dir = home;
  return status;
}
