#include "platform/posix/large_memory.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <limits>
#include <new>
#include <utility>
#include <vector>

namespace {

constexpr std::size_t hugePage = std::size_t{2} << 20;

bool isOnHugePage(const void* block) { return reinterpret_cast<std::uintptr_t>(block) % hugePage == 0; }

std::byte patternAt(std::size_t index) { return static_cast<std::byte>(index * 31 + index / 4093); }

TEST(LargeMemory, alignsLargeBlocksToHugePages) {
  for (const std::size_t size : {2 * hugePage, 2 * hugePage + 1, 9 * hugePage - 1}) {
    auto* block = static_cast<std::byte*>(largeMemory().allocate(size));
    EXPECT_TRUE(isOnHugePage(block));
    std::memset(block, 0xA5, size);
    largeMemory().deallocate(block, size);
  }
}

TEST(LargeMemory, alignsSmallBlocksForAnyType) {
  for (const std::size_t size : {std::size_t{1}, std::size_t{16}, std::size_t{100}, std::size_t{4096}}) {
    void* block = largeMemory().allocate(size);
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(block) % alignof(std::max_align_t), 0U);
    std::memset(block, 0xA5, size);
    largeMemory().deallocate(block, size);
  }
}

TEST(LargeMemory, throwsIfThereIsNotEnoughMemory) {
#ifdef __SANITIZE_ADDRESS__
  GTEST_SKIP() << "AddressSanitizer ends the process instead";
#endif
  constexpr std::size_t largest = std::numeric_limits<std::size_t>::max();
  for (const std::size_t size : {std::size_t{1} << 60, largest - hugePage, largest}) {
    EXPECT_THROW(static_cast<void>(largeMemory().allocate(size)), std::bad_alloc);
    EXPECT_THROW(LargeBuffer{size}, std::bad_alloc);
  }
}

TEST(LargeMemory, keepsSeveralLargeBlocksApart) {
  const std::vector<std::size_t> sizes = {2 * hugePage, 4 * hugePage + 1, 2 * hugePage, 3 * hugePage - 1, 100};
  std::vector<std::byte*> blocks;
  for (const std::size_t size : sizes) {
    blocks.push_back(static_cast<std::byte*>(largeMemory().allocate(size)));
    std::memset(blocks.back(), static_cast<int>(blocks.size()), size);
  }
  // Freed out of order, so that a block outlives its neighbours.
  for (const std::size_t freed : {2U, 0U, 4U, 3U, 1U}) {
    const std::byte expected{static_cast<unsigned char>(freed + 1)};
    for (std::size_t index = 0; index < sizes[freed]; ++index)
      ASSERT_EQ(blocks[freed][index], expected) << "block " << freed << ", byte " << index;
    largeMemory().deallocate(blocks[freed], sizes[freed]);
  }
}

TEST(LargeBuffer, keepsSeveralContentsApart) {
  std::vector<Bytes> contents;
  for (int number = 1; number <= 4; ++number) {
    LargeBuffer buffer(2 * hugePage);
    buffer.resize(2 * hugePage);
    std::memset(buffer.data(), number, buffer.size());
    buffer.reserve(3 * hugePage);
    contents.push_back(std::move(buffer).take());
  }
  contents.erase(contents.begin() + 1);
  for (const Bytes& content : contents) {
    ASSERT_EQ(content.size(), 2 * hugePage);
    const char first = content.text().front();
    EXPECT_EQ(content.text().find_first_not_of(first), std::string_view::npos);
  }
  EXPECT_EQ(contents[0].text().front(), 1);
  EXPECT_EQ(contents[1].text().front(), 3);
  EXPECT_EQ(contents[2].text().front(), 4);
}

TEST(LargeMemory, servesAGrowingVector) {
  std::vector<std::uint64_t, MemoryAllocator<std::uint64_t>> numbers{MemoryAllocator<std::uint64_t>(largeMemory())};
  for (std::uint64_t number = 0; number < 3'000'000; ++number) numbers.push_back(number * number);
  for (std::uint64_t number = 0; number < 3'000'000; number += 997) EXPECT_EQ(numbers[number], number * number);
}

TEST(LargeBuffer, keepsItsContentWhenItGrows) {
  LargeBuffer buffer(10);
  for (const std::size_t capacity : {std::size_t{1000}, hugePage, 2 * hugePage, 2 * hugePage + 5, 9 * hugePage}) {
    const std::size_t before = buffer.size();
    buffer.reserve(capacity);
    EXPECT_GE(buffer.capacity(), capacity);
    for (std::size_t index = 0; index < before; ++index)
      ASSERT_EQ(buffer.data()[index], patternAt(index)) << capacity << ' ' << index;
    buffer.resize(capacity);
    for (std::size_t index = 0; index < capacity; ++index) buffer.data()[index] = patternAt(index);
  }
  EXPECT_TRUE(isOnHugePage(buffer.data()));
}

TEST(LargeBuffer, doesNotShrink) {
  LargeBuffer buffer(3 * hugePage);
  const std::byte* start = buffer.data();
  buffer.reserve(10);
  EXPECT_EQ(buffer.capacity(), 3 * hugePage);
  EXPECT_EQ(buffer.data(), start);
}

TEST(LargeBuffer, handsOverItsMemory) {
  for (const std::size_t size : {std::size_t{5}, 3 * hugePage + 5}) {
    Bytes bytes;
    const std::byte* start = nullptr;
    {
      LargeBuffer buffer(size + 100);
      buffer.resize(size);
      for (std::size_t index = 0; index < size; ++index) buffer.data()[index] = patternAt(index);
      start = buffer.data();
      bytes = std::move(buffer).take();
    }
    EXPECT_EQ(bytes.data(), start);
    ASSERT_EQ(bytes.size(), size);
    const Bytes slice = bytes.slice(size - 2, 2);
    bytes = Bytes();
    EXPECT_EQ(slice.data()[1], patternAt(size - 1));
  }
}

TEST(LargeBuffer, handsOverAnEmptyBuffer) {
  LargeBuffer buffer(0);
  EXPECT_EQ(std::move(buffer).take().size(), 0U);
}

}  // namespace
