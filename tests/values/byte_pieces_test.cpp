// Bytes in pieces, read as if they were in one storage.
#include "values/byte_pieces.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <string_view>

namespace {

// Cuts a text into pieces of `size` bytes, each in storage of its own.
BytePieces cut(std::string_view text, std::size_t size) {
  BytePieces pieces;
  for (; !text.empty(); text.remove_prefix(std::min(size, text.size())))
    pieces.append(Bytes(std::string(text.substr(0, size))));
  return pieces;
}

constexpr std::string_view sample = "0123456789abcdef";

TEST(BytePieces, joinInTheOrderOfAppending) {
  for (std::size_t size = 1; size <= sample.size(); ++size) {
    const BytePieces pieces = cut(sample, size);
    EXPECT_EQ(pieces.joined().text(), sample);
    EXPECT_EQ(pieces.size(), sample.size());
  }
}

TEST(BytePieces, skipEmptyOnes) {
  BytePieces pieces;
  pieces.append({});
  pieces.append(Bytes("a"));
  pieces.append({});
  EXPECT_EQ(pieces.pieces().size(), 1U);
  EXPECT_EQ(pieces.joined().text(), "a");
}

TEST(BytePieces, canBeNone) {
  const BytePieces none;
  EXPECT_EQ(none.size(), 0U);
  EXPECT_TRUE(none.joined().empty());
  BytePieces::Reader reader(none);
  EXPECT_TRUE(reader.isAtEnd());
  EXPECT_TRUE(reader.take(1).empty());
  EXPECT_TRUE(reader.skip(""));
  EXPECT_FALSE(reader.skip("a"));
}

TEST(BytePieces, copyNothingOfASinglePiece) {
  const Bytes whole{std::string(sample)};
  EXPECT_EQ(BytePieces(whole).joined().data(), whole.data());
}

TEST(BytePieces, areReadFromAnyOffset) {
  for (std::size_t size = 1; size <= sample.size(); ++size) {
    const BytePieces pieces = cut(sample, size);
    for (std::size_t offset = 0; offset <= sample.size(); ++offset) {
      BytePieces::Reader reader(pieces, offset);
      EXPECT_EQ(reader.isAtEnd(), offset == sample.size());
      EXPECT_TRUE(reader.skip(sample.substr(offset))) << size << ' ' << offset;
      EXPECT_TRUE(reader.isAtEnd());
    }
  }
}

TEST(BytePieces, goOnWithNothingButTheirBytes) {
  for (std::size_t size = 1; size <= sample.size(); ++size) {
    const BytePieces pieces = cut(sample, size);
    for (std::size_t place = 0; place < sample.size(); ++place) {
      std::string other(sample);
      other[place] = '!';
      EXPECT_FALSE(BytePieces::Reader(pieces).skip(other)) << size << ' ' << place;
    }
    EXPECT_FALSE(BytePieces::Reader(pieces).skip(std::string(sample) + "0"));
  }
}

TEST(BytePieces, areTakenUpToTheEndOfEachPiece) {
  const BytePieces pieces = cut("abcde", 3);
  BytePieces::Reader reader(pieces);
  EXPECT_EQ(reader.take(2), "ab");
  EXPECT_EQ(reader.take(2), "c");
  EXPECT_EQ(reader.take(9), "de");
  EXPECT_EQ(reader.take(9), "");
}

}  // namespace
