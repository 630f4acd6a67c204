// Where the large arrays of a document come from. std::pmr has the same, but no Mac before macOS 14 has that.
#pragma once

#include <cstddef>

// Allocates blocks of memory, aligned for every type that is not over-aligned.
class Memory {
 public:
  virtual ~Memory() = default;

  // Throws std::bad_alloc.
  virtual void* allocate(std::size_t size) = 0;

  // Frees a block that allocate() returned for this size.
  virtual void deallocate(void* block, std::size_t size) = 0;
};

// Lets a container of the standard library allocate from a Memory, which must outlive it.
template <class Element>
class MemoryAllocator {
 public:
  using value_type = Element;

  explicit MemoryAllocator(Memory& memory) : memory_(&memory) {}
  template <class Other>  // NOLINTNEXTLINE(google-explicit-constructor): containers convert between allocators
  MemoryAllocator(const MemoryAllocator<Other>& other) : memory_(&other.memory()) {}

  Memory& memory() const { return *memory_; }
  Element* allocate(std::size_t count) { return static_cast<Element*>(memory_->allocate(count * sizeof(Element))); }
  void deallocate(Element* block, std::size_t count) { memory_->deallocate(block, count * sizeof(Element)); }

  bool operator==(const MemoryAllocator& other) const = default;

 private:
  Memory* memory_;
};
