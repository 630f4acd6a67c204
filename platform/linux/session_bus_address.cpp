#include "platform/linux/session_bus_address.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <string_view>

#include "platform/error.h"
#include "platform/linux/posix_file_system.h"

namespace {

// The user whose home folder this is.
uid_t ownerOfHome() {
  struct stat status {};
  try {
    const std::string folder = PosixFileSystem().homeFolder() + "/";
    return stat(folder.c_str(), &status) == 0 ? status.st_uid : geteuid();
  } catch (const Error&) {
    return geteuid();
  }
}

bool isSocketOf(uid_t owner, const std::string& path) {
  struct stat status {};
  return stat(path.c_str(), &status) == 0 && S_ISSOCK(status.st_mode) && status.st_uid == owner;
}

// Returns true if the path is in a folder that this process may not search, so that a socket may be there.
bool isHidden(const std::string& path) {
  struct stat status {};
  return stat(path.c_str(), &status) != 0 && errno == EACCES;
}

// Returns the address of a socket. Addresses escape every byte but these characters.
std::string addressOf(const std::string& path) {
  constexpr std::string_view plain = "-0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZ_abcdefghijklmnopqrstuvwxyz/.\\*";
  constexpr std::string_view digits = "0123456789abcdef";
  std::string address = "unix:path=";
  for (const char character : path) {
    const auto byte = static_cast<unsigned char>(character);
    if (plain.find(character) != plain.npos)
      address += character;
    else
      address += {'%', digits[byte >> 4], digits[byte & 0xF]};
  }
  return address;
}

std::optional<std::string> usualAddress() {
  const uid_t owner = ownerOfHome();
  const char* runtimeFolder = std::getenv("XDG_RUNTIME_DIR");
  if (runtimeFolder != nullptr && runtimeFolder[0] == '/') {
    const std::string path = std::string(runtimeFolder) + "/bus";
    if (isSocketOf(owner, path)) return addressOf(path);
  }
  const std::string path = "/run/user/" + std::to_string(owner) + "/bus";
  return isSocketOf(owner, path) || isHidden(path) ? std::optional(addressOf(path)) : std::nullopt;
}

}  // namespace

std::optional<std::string> sessionBusAddress() {
  const char* address = std::getenv("DBUS_SESSION_BUS_ADDRESS");
  return address != nullptr && *address != '\0' ? std::optional<std::string>(address) : usualAddress();
}
