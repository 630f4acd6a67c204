// Memory for blocks of many megabytes. Fresh memory costs a page fault for every page that is first touched; asking
// the kernel for huge pages makes that one fault for 2 MiB instead of one for 4 KiB, which for a large bookmark file
// is most of the cost of the memory.
#pragma once

#include <cstddef>
#include <memory_resource>

#include "values/bytes.h"

// A resource that gives blocks of 4 MiB and more from huge pages, where the kernel has them, and smaller ones as
// usual. It lives for ever.
std::pmr::memory_resource* largeMemory();

// A growable buffer of bytes that nobody initialises. Throws std::bad_alloc.
class LargeBuffer {
 public:
  explicit LargeBuffer(std::size_t capacity);
  ~LargeBuffer();
  LargeBuffer(const LargeBuffer&) = delete;
  LargeBuffer& operator=(const LargeBuffer&) = delete;

  std::byte* data() { return start_; }
  std::size_t size() const { return size_; }
  std::size_t capacity() const { return capacity_; }

  // Makes the capacity at least so large; the first size() bytes are kept.
  void reserve(std::size_t capacity);

  // Makes the first `size` bytes, at most the capacity, the content; whatever they hold.
  void resize(std::size_t size) { size_ = size; }

  // The content, with the memory itself; the buffer is done then.
  Bytes take() &&;

 private:
  std::byte* start_ = nullptr;
  std::size_t size_ = 0;
  std::size_t capacity_ = 0;
};
