// Blocks of sixteen bytes, compared with looking at each byte.
#include "values/byte_block.h"

#include <gtest/gtest.h>

#include <array>

namespace {

constexpr int bytes = 256;

// Expects a set to have exactly the places of the bytes, starting with `first`, for which `matches` is true.
template <class Matches>
void expectSet(ByteSet found, int first, const Matches& matches) {
  for (int place = 0; place < static_cast<int>(ByteBlock::size); ++place) {
    const auto byte = static_cast<unsigned char>(first + place);
    EXPECT_EQ((found >> place & 1U) != 0, matches(byte)) << "byte " << int{byte};
  }
  EXPECT_EQ(found & ~ByteBlock::all, 0U);
}

TEST(ByteBlock, findsTheSameBytesAsALookAtEach) {
  for (int first = 0; first < bytes; ++first) {
    std::array<char, ByteBlock::size> text{};
    for (std::size_t place = 0; place < text.size(); ++place)
      text[place] = static_cast<char>(first + static_cast<int>(place));
    const ByteBlock block(text.data());
    expectSet(block.equal('<'), first, [](unsigned char byte) { return byte == '<'; });
    expectSet(block.equal('\xE9'), first, [](unsigned char byte) { return byte == 0xE9; });
    expectSet(block.equalExceptFor(2, '<'), first, [](unsigned char byte) { return byte == '<' || byte == '>'; });
    expectSet(block.between('/', '9'), first, [](unsigned char byte) { return byte >= '/' && byte <= '9'; });
    expectSet(block.between('a', 'z', 0x20), first,
              [](unsigned char byte) { return (byte >= 'a' && byte <= 'z') || (byte >= 'A' && byte <= 'Z'); });
    expectSet(block.high(), first, [](unsigned char byte) { return byte >= 0x80; });
  }
}

}  // namespace
