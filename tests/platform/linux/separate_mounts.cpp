#include "tests/platform/linux/separate_mounts.h"

#include <sched.h>
#include <sys/mount.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <fstream>

namespace {

bool writeLine(const char* path, const std::string& line) {
  std::ofstream file(path);
  file << line + '\n' << std::flush;
  return static_cast<bool>(file);
}

// Returns the map of a user namespace that has one user or group, with the same ID as outside.
std::string identityMap(unsigned number) { return std::to_string(number) + " " + std::to_string(number) + " 1"; }

}  // namespace

std::string separateMounts() {
  const uid_t user = geteuid();
  const gid_t group = getegid();
  const bool privileged = user == 0;
  if (unshare(privileged ? CLONE_NEWNS : CLONE_NEWNS | CLONE_NEWUSER) != 0)
    return std::string("no mount namespace: ") + std::strerror(errno);
  // Without privileges, mounting is allowed only in a user namespace.
  const bool isMapped =
      privileged || (writeLine("/proc/self/setgroups", "deny") && writeLine("/proc/self/uid_map", identityMap(user)) &&
                     writeLine("/proc/self/gid_map", identityMap(group)));
  if (!isMapped) return "no user namespace for user " + std::to_string(user);
  if (mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0)
    return std::string("mounts cannot be made private: ") + std::strerror(errno);
  return {};
}

std::string separateRun() {
  if (std::string problem = separateMounts(); !problem.empty()) return problem;
  if (mount("none", "/run", "tmpfs", 0, "size=1m,mode=755") != 0)
    return std::string("/run cannot be mounted: ") + std::strerror(errno);
  return {};
}
