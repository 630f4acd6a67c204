#include "platform/linux/icu_start.h"

#include <unicode/uclean.h>
#include <unistd.h>

#include <atomic>
#include <cstddef>
#include <cstdlib>
#include <iostream>

#include "platform/product.h"

namespace {

// The number of objects that live.
std::atomic<int>& starts() {
  static std::atomic<int> number = 0;
  return number;
}

void* orExit(void* memory) {
  if (memory != nullptr || starts() == 0) return memory;
  std::cerr << product::name << ": there is not enough memory" << std::endl;
  _exit(EXIT_FAILURE);  // without the destructors of static objects, some of which wait for ICU
}

void* allocate(const void*, std::size_t size) { return orExit(std::malloc(size)); }
void* reallocate(const void*, void* memory, std::size_t size) { return orExit(std::realloc(memory, size)); }
void release(const void*, void* memory) { std::free(memory); }

}  // namespace

IcuStart::IcuStart() {
  ++starts();
  UErrorCode ignored = U_ZERO_ERROR;
  u_setMemoryFunctions(nullptr, allocate, reallocate, release, &ignored);
}

IcuStart::~IcuStart() { --starts(); }
