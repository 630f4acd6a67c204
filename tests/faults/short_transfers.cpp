// A library for LD_PRELOAD that makes read and write transfer at most QUILLERY_LONGEST_TRANSFER bytes per call, as
// POSIX allows.
#include <dlfcn.h>
#include <sys/types.h>

#include <algorithm>
#include <cstddef>
#include <cstdlib>

namespace {

template <class Function>
Function next(const char* name) {
  return reinterpret_cast<Function>(dlsym(RTLD_NEXT, name));
}

std::size_t atMost(std::size_t size) {
  const char* longest = std::getenv("QUILLERY_LONGEST_TRANSFER");
  return longest == nullptr ? size : std::min<std::size_t>(size, std::strtoul(longest, nullptr, 10));
}

}  // namespace

extern "C" ssize_t read(int file, void* bytes, std::size_t size) {
  static const auto real = next<ssize_t (*)(int, void*, std::size_t)>("read");
  return real(file, bytes, atMost(size));
}

extern "C" ssize_t write(int file, const void* bytes, std::size_t size) {
  static const auto real = next<ssize_t (*)(int, const void*, std::size_t)>("write");
  return real(file, bytes, atMost(size));
}
