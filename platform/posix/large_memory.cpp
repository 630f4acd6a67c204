#include "platform/posix/large_memory.h"

#include <sys/mman.h>

#include <algorithm>
#include <limits>
#include <new>
#include <utility>

namespace {

constexpr std::size_t hugePage = std::size_t{2} << 20;
constexpr std::size_t leastOnHugePages = 2 * hugePage;
// Rounding a larger size up to the alignment could overflow in operator new.
constexpr std::size_t largest = std::numeric_limits<std::size_t>::max() / 2;

class LargeMemory : public std::pmr::memory_resource {
  void* do_allocate(std::size_t size, std::size_t alignment) override {
    if (size > largest) throw std::bad_alloc();
    void* block = ::operator new(size, alignmentOf(size, alignment));
#ifdef MADV_HUGEPAGE
    // Only advice: if it fails, the block has small pages.
    if (size >= leastOnHugePages) madvise(block, size, MADV_HUGEPAGE);
#endif
    return block;
  }

  void do_deallocate(void* block, std::size_t size, std::size_t alignment) override {
    ::operator delete(block, alignmentOf(size, alignment));
  }

  bool do_is_equal(const memory_resource& other) const noexcept override { return this == &other; }

  static std::align_val_t alignmentOf(std::size_t size, std::size_t alignment) {
    return std::align_val_t(size >= leastOnHugePages ? std::max(alignment, hugePage) : alignment);
  }
};

}  // namespace

std::pmr::memory_resource* largeMemory() {
  static LargeMemory memory;
  return &memory;
}

LargeBuffer::LargeBuffer(std::size_t capacity) { reserve(std::max<std::size_t>(capacity, 1)); }

void LargeBuffer::reserve(std::size_t capacity) {
  if (capacity <= this->capacity()) return;
  std::unique_ptr<std::byte, Deallocate> larger(static_cast<std::byte*>(largeMemory()->allocate(capacity)),
                                                Deallocate{capacity});
  if (block_) std::copy_n(block_.get(), size_, larger.get());
  block_ = std::move(larger);
}

Bytes LargeBuffer::take() && {
  const std::byte* start = block_.get();
  return {std::shared_ptr<const void>(std::move(block_)), start, size_};
}
