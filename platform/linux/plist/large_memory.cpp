#include "platform/linux/plist/large_memory.h"

#include <sys/mman.h>

#include <algorithm>
#include <limits>
#include <memory>
#include <new>
#include <utility>

namespace {

constexpr std::size_t hugePage = std::size_t{2} << 20;
constexpr std::size_t leastMapped = 2 * hugePage;
constexpr std::size_t largest = std::numeric_limits<std::size_t>::max() / 2;

// A block begins on a huge page, so the mapping is made one page larger and its ends are cut off.
void* mapAligned(std::size_t size) {
  const std::size_t whole = size + hugePage;
  if (whole < size) throw std::bad_alloc();
  void* mapping = mmap(nullptr, whole, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
  if (mapping == MAP_FAILED) throw std::bad_alloc();
  auto* first = static_cast<std::byte*>(mapping);
  void* aligned = mapping;
  std::size_t space = whole;
  std::align(hugePage, size, aligned, space);
  auto* start = static_cast<std::byte*>(aligned);
  if (start != first) munmap(first, static_cast<std::size_t>(start - first));
  if (const std::size_t rest = whole - static_cast<std::size_t>(start - first) - size; rest != 0)
    munmap(start + size, rest);
  madvise(start, size, MADV_HUGEPAGE);  // a wish; without it everything works, only slower
  return start;
}

// A size no memory holds stays one, instead of going round to a small one.
std::size_t mappedSize(std::size_t size) { return size > largest ? size : (size + hugePage - 1) / hugePage * hugePage; }

// A larger block with the content of a mapped one, which is gone then: its pages are moved, not copied.
void* moveMapped(void* block, std::size_t size, std::size_t larger) {
  void* place = mapAligned(mappedSize(larger));
  if (mremap(block, mappedSize(size), mappedSize(size), MREMAP_MAYMOVE | MREMAP_FIXED, place) != MAP_FAILED)
    return place;
  munmap(place, mappedSize(larger));
  throw std::bad_alloc();
}

class LargeMemory : public std::pmr::memory_resource {
  void* do_allocate(std::size_t size, std::size_t alignment) override {
    return size < leastMapped ? ::operator new(size, std::align_val_t(alignment)) : mapAligned(mappedSize(size));
  }

  void do_deallocate(void* block, std::size_t size, std::size_t alignment) override {
    if (size < leastMapped)
      ::operator delete(block, std::align_val_t(alignment));
    else
      munmap(block, mappedSize(size));
  }

  bool do_is_equal(const memory_resource& other) const noexcept override { return this == &other; }
};

}  // namespace

std::pmr::memory_resource* largeMemory() {
  static LargeMemory memory;
  return &memory;
}

LargeBuffer::LargeBuffer(std::size_t capacity) { reserve(std::max<std::size_t>(capacity, 1)); }

LargeBuffer::~LargeBuffer() {
  if (start_ != nullptr) largeMemory()->deallocate(start_, capacity_);
}

void LargeBuffer::reserve(std::size_t capacity) {
  if (capacity <= capacity_) return;
  if (capacity_ >= leastMapped) {
    start_ = static_cast<std::byte*>(moveMapped(start_, capacity_, capacity));
  } else {
    auto* larger = static_cast<std::byte*>(largeMemory()->allocate(capacity));
    if (start_ != nullptr) {
      std::copy_n(start_, size_, larger);
      largeMemory()->deallocate(start_, capacity_);
    }
    start_ = larger;
  }
  capacity_ = capacity;
}

Bytes LargeBuffer::take() && {
  const std::size_t capacity = std::exchange(capacity_, 0);
  std::byte* start = std::exchange(start_, nullptr);
  const std::shared_ptr<const void> owner(
      start, [capacity](const void* block) { largeMemory()->deallocate(const_cast<void*>(block), capacity); });
  return {owner, start, size_};
}
