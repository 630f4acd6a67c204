// A library for LD_PRELOAD that makes an allocation fail: the QUILLERY_FAILING_ALLOCATION-th, counted from 1, or that
// one and all later ones if QUILLERY_MEMORY_STAYS_SHORT is set. At its end the program writes the number of its
// allocations to the file QUILLERY_COUNT_ALLOCATIONS, if that is set.
#include <atomic>
#include <cerrno>
#include <cstddef>
#include <cstdio>
#include <cstdlib>

// glibc's functions, by names of ours.
extern "C" {
void* originalMalloc(std::size_t size) __asm__("__libc_malloc");
void* originalCalloc(std::size_t count, std::size_t size) __asm__("__libc_calloc");
void* originalRealloc(void* start, std::size_t size) __asm__("__libc_realloc");
void* originalMemalign(std::size_t alignment, std::size_t size) __asm__("__libc_memalign");
}

namespace {

std::atomic<long> allocations = 0;
long failing = 0;  // 0 for none
bool staysShort = false;

// Before this, the dynamic linker allocates.
__attribute__((constructor)) void start() {
  const char* number = std::getenv("QUILLERY_FAILING_ALLOCATION");
  failing = number == nullptr ? 0 : std::strtol(number, nullptr, 10);
  staysShort = std::getenv("QUILLERY_MEMORY_STAYS_SHORT") != nullptr;
  allocations = 0;
}

__attribute__((destructor)) void end() {
  const long counted = allocations;
  const char* path = std::getenv("QUILLERY_COUNT_ALLOCATIONS");
  std::FILE* file = path == nullptr ? nullptr : std::fopen(path, "w");
  if (file == nullptr) return;
  static_cast<void>(std::fprintf(file, "%ld\n", counted));
  static_cast<void>(std::fclose(file));
}

bool fails() {
  const long number = ++allocations;
  if (failing == 0 || number < failing || (number > failing && !staysShort)) return false;
  errno = ENOMEM;
  return true;
}

}  // namespace

extern "C" void* malloc(std::size_t size) { return fails() ? nullptr : originalMalloc(size); }
extern "C" void* calloc(std::size_t count, std::size_t size) { return fails() ? nullptr : originalCalloc(count, size); }
extern "C" void* realloc(void* start, std::size_t size) { return fails() ? nullptr : originalRealloc(start, size); }
extern "C" void* aligned_alloc(std::size_t alignment, std::size_t size) {
  return fails() ? nullptr : originalMemalign(alignment, size);
}
