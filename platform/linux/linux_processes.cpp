#include "platform/linux/linux_processes.h"

#include <sys/random.h>

#include <array>
#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <system_error>

#include "platform/error.h"

namespace {

using Uuid = std::array<std::uint8_t, 16>;

Uuid randomBytes() {
  Uuid bytes{};
  ssize_t count = 0;
  do {
    count = getrandom(bytes.data(), bytes.size(), 0);  // so few come all at once or not at all
  } while (count < 0 && errno == EINTR);
  if (count != static_cast<ssize_t>(bytes.size()))
    throw Error(
        "POSIX", errno,
        "No random bytes could be had because the system answered “" + std::generic_category().message(errno) + "”.");
  return bytes;
}

std::string canonicalText(const Uuid& uuid) {
  constexpr const char* digits = "0123456789ABCDEF";
  std::string text;
  for (std::size_t index = 0; index < uuid.size(); ++index) {
    if (index == 4 || index == 6 || index == 8 || index == 10) text += '-';
    text += digits[uuid[index] >> 4];
    text += digits[uuid[index] & 0x0F];
  }
  return text;
}

}  // namespace

std::string LinuxProcesses::randomUuid() {
  Uuid uuid = randomBytes();
  uuid[6] = static_cast<std::uint8_t>((uuid[6] & 0x0F) | 0x40);  // version 4: random
  uuid[8] = static_cast<std::uint8_t>((uuid[8] & 0x3F) | 0x80);  // the variant that has versions
  return canonicalText(uuid);
}
