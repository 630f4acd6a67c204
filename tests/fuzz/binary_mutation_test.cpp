// How the fuzzer splits, changes and joins binary property lists.
#include "fuzz/binary_mutation.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <optional>
#include <span>
#include <string>

#include "fuzz/binary_objects.h"
#include "platform/error.h"
#include "platform/linux/plist/binary_reader.h"
#include "tests/support/binary_file.h"

namespace {

constexpr unsigned rounds = 2000;

Bytes bookmarks() {
  BinaryFile file(2);
  const auto bar =
      file.folder("BookmarksBar", {file.leaf("b"), file.leaf("a rather long title"), file.folder("f", {})});
  return file.bytes(file.folder("", {bar}));
}

std::optional<BinaryObjects> apart(const Bytes& bytes) {
  return objectsOf(std::span(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size()));
}

bool isRead(const std::string& file) {
  try {
    readBinary(Bytes(file));
    return true;
  } catch (const Error&) {
    return false;
  }
}

std::size_t keepBytes(std::uint8_t*, std::size_t size, std::size_t) { return size; }

// Changes the bookmarks in many ways and returns how many of the results are readable.
template <class Change>
unsigned readOfAll(Change change) {
  unsigned count = 0;
  for (unsigned seed = 1; seed <= rounds; ++seed) {
    BinaryObjects objects = *apart(bookmarks());
    count += isRead(change(objects, seed)) ? 1 : 0;
  }
  return count;
}

TEST(BinaryMutation, joinsSplitObjects) {
  const std::optional<BinaryObjects> objects = apart(bookmarks());
  ASSERT_TRUE(objects.has_value());
  EXPECT_EQ(readBinary(Bytes(fileOf(*objects))), readBinary(bookmarks()));
}

TEST(BinaryMutation, splitsNoFileWithoutAnOffsetTable) {
  EXPECT_FALSE(apart(Bytes(std::string("bplist00"))).has_value());
  EXPECT_FALSE(apart(Bytes("bplist00" + std::string(64, '\xFF'))).has_value());
}

TEST(BinaryMutation, keepsMostFilesReadable) {
  const unsigned count = readOfAll([](BinaryObjects& objects, unsigned seed) {
    mutate(objects, seed, keepBytes);
    return fileOf(objects);
  });
  EXPECT_GT(count, rounds / 2);
  EXPECT_LT(count, rounds);
}

TEST(BinaryMutation, graftsOneFileOntoAnother) {
  const unsigned count = readOfAll([](BinaryObjects& objects, unsigned seed) {
    graft(objects, *apart(bookmarks()), seed);
    return fileOf(objects);
  });
  EXPECT_EQ(count, rounds);
}

TEST(BinaryMutation, tampersWithAQuarterOfTheFiles) {
  unsigned changed = 0;
  const unsigned count = readOfAll([&](BinaryObjects& objects, unsigned seed) {
    const std::string before = fileOf(objects);
    std::string file = before;
    tamper(file, seed);
    changed += file != before ? 1 : 0;
    return file;
  });
  EXPECT_GT(changed, rounds / 8);
  EXPECT_LT(changed, rounds / 3);
  EXPECT_LT(count, rounds);
}

}  // namespace
