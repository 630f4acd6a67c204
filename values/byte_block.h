// Sixteen bytes of text that are examined together: by vector instructions where every processor of the kind has them,
// else one by one.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

#ifdef __SSE2__
#include <emmintrin.h>
#endif

// A set of the bytes of a block: bit n stands for byte n.
using ByteSet = std::uint32_t;

class ByteBlock {
 public:
  static constexpr std::size_t size = 16;
  static constexpr ByteSet all = 0xFFFF;

  // Reads the block at `start`.
  explicit ByteBlock(const char* start) { std::memcpy(&bytes_, start, size); }

#ifdef __SSE2__
  // Returns the bytes that are `byte`.
  ByteSet equal(char byte) const { return set(_mm_cmpeq_epi8(bytes_, _mm_set1_epi8(byte))); }
  // Returns the bytes that are `byte` if the bits of `ignored` are set in both.
  ByteSet equalExceptFor(char ignored, char byte) const {
    const __m128i bits = _mm_set1_epi8(ignored);
    return set(_mm_cmpeq_epi8(_mm_or_si128(bytes_, bits), _mm_or_si128(_mm_set1_epi8(byte), bits)));
  }
  // Returns the bytes from `first` to `last`, if the bits of `ignored` are set in them.
  ByteSet between(char first, char last, char ignored = 0) const {
    const __m128i above = _mm_sub_epi8(_mm_or_si128(bytes_, _mm_set1_epi8(ignored)), _mm_set1_epi8(first));
    return set(_mm_cmpeq_epi8(_mm_min_epu8(above, _mm_set1_epi8(static_cast<char>(last - first))), above));
  }
  // Returns the bytes that are not ASCII.
  ByteSet high() const { return set(bytes_); }

 private:
  static ByteSet set(__m128i matches) { return static_cast<ByteSet>(_mm_movemask_epi8(matches)); }

  __m128i bytes_;
#else
  ByteSet equal(char byte) const {
    return those([=](char own) { return own == byte; });
  }
  ByteSet equalExceptFor(char ignored, char byte) const {
    return those([=](char own) { return (own | ignored) == (byte | ignored); });
  }
  ByteSet between(char first, char last, char ignored = 0) const {
    return those([=](char own) {
      return static_cast<unsigned char>((own | ignored) - first) <= static_cast<unsigned char>(last - first);
    });
  }
  ByteSet high() const {
    return those([](char own) { return (own & 0x80) != 0; });
  }

 private:
  template <class Matches>
  ByteSet those(Matches matches) const {
    ByteSet found = 0;
    for (std::size_t place = 0; place < size; ++place) found |= ByteSet{matches(bytes_[place])} << place;
    return found;
  }

  char bytes_[size];  // NOLINT(modernize-avoid-c-arrays): as plain as a register
#endif
};
