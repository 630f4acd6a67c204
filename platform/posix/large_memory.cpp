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

class LargeMemory : public Memory {
 public:
  void* allocate(std::size_t size) override {
    if (size > largest) throw std::bad_alloc();
    void* block = ::operator new(size, alignmentOf(size));
#ifdef MADV_HUGEPAGE
    // Only advice: if it fails, the block has small pages.
    if (size >= leastOnHugePages) madvise(block, size, MADV_HUGEPAGE);
#endif
    return block;
  }

  void deallocate(void* block, std::size_t size) override { ::operator delete(block, alignmentOf(size)); }

 private:
  static std::align_val_t alignmentOf(std::size_t size) {
    return std::align_val_t(size >= leastOnHugePages ? hugePage : alignof(std::max_align_t));
  }
};

}  // namespace

Memory& largeMemory() {
  static LargeMemory memory;
  return memory;
}

LargeBuffer::LargeBuffer(std::size_t capacity) { reserve(std::max<std::size_t>(capacity, 1)); }

void LargeBuffer::reserve(std::size_t capacity) {
  if (capacity <= this->capacity()) return;
  std::unique_ptr<std::byte, Deallocate> larger(static_cast<std::byte*>(largeMemory().allocate(capacity)),
                                                Deallocate{capacity});
  if (block_) std::copy_n(block_.get(), size_, larger.get());
  block_ = std::move(larger);
}

Bytes LargeBuffer::take() && {
  const std::byte* start = block_.get();
  return {std::shared_ptr<const void>(std::move(block_)), start, size_};
}
