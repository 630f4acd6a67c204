#include "values/base64.h"

#include <algorithm>
#include <array>
#include <cstdint>

#include "values/byte_block.h"

namespace {

constexpr std::string_view alphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

constexpr std::uint8_t invalid = 0xFF;
constexpr std::uint8_t space = 0xFE;
constexpr std::uint8_t padding = 0xFD;

constexpr std::array<std::uint8_t, 256> makeDigits() {
  std::array<std::uint8_t, 256> values{};
  values.fill(invalid);
  for (std::size_t index = 0; index < alphabet.size(); ++index)
    values[static_cast<unsigned char>(alphabet[index])] = static_cast<std::uint8_t>(index);
  for (const char character : {' ', '\t', '\n', '\r'}) values[static_cast<unsigned char>(character)] = space;
  values['='] = padding;
  return values;
}

constexpr std::array<std::uint8_t, 256> digitValues = makeDigits();

std::uint8_t digitOf(char character) { return digitValues[static_cast<unsigned char>(character)]; }

// Counts the digits at the start of a text up to the first block that has anything but digits and white space. Sets
// `length` to the length of the text before that block.
std::size_t countDigits(std::string_view text, std::size_t& length) {
  std::size_t count = 0;
  for (length = 0; text.size() - length >= ByteBlock::size; length += ByteBlock::size) {
    const ByteBlock block(text.data() + length);
    constexpr char lowerCase = 0x20;
    // The slash precedes the digits.
    const ByteSet found = block.between('a', 'z', lowerCase) | block.between('/', '9') | block.equal('+');
    if (found == ByteBlock::all) {
      count += ByteBlock::size;
    } else {
      const ByteSet spaces = block.equal('\n') | block.equal('\t') | block.equal(' ') | block.equal('\r');
      if ((found | spaces) != ByteBlock::all) break;
      count += ByteBlock::size;
      for (ByteSet rest = spaces; rest != 0; rest &= rest - 1) --count;
    }
  }
  return count;
}

}  // namespace

bool isCanonicalBase64(std::string_view text) {
  std::size_t index = 0;
  std::size_t count = countDigits(text, index);
  std::size_t place = index;
  while (place > 0 && digitOf(text[place - 1]) == space) --place;
  std::uint8_t last = place > 0 ? digitOf(text[place - 1]) : std::uint8_t{0};
  for (; index < text.size(); ++index) {
    const std::uint8_t digit = digitOf(text[index]);
    if (digit == space) continue;
    if (digit >= padding) break;
    last = digit;
    ++count;
  }
  std::size_t paddings = 0;
  for (; index < text.size(); ++index) {
    const std::uint8_t digit = digitOf(text[index]);
    if (digit == padding)
      ++paddings;
    else if (digit != space)
      return false;
  }
  if ((count + paddings) % 4 != 0 || paddings > 2) return false;
  return paddings == 0 || (last & (paddings == 1 ? 0x03 : 0x0F)) == 0;
}

std::string decodeBase64(std::string_view text) {
  std::string bytes;
  std::uint32_t group = 0;
  unsigned count = 0;
  unsigned paddings = 0;
  for (const char character : text) {
    const std::uint8_t digit = digitOf(character);
    // The platform's decoder counts white space, with \v and \f, as nothing between two paddings.
    if (digit == padding)
      ++paddings;
    else if (digit != space && character != '\v' && character != '\f')
      paddings = 0;
    if (digit == invalid || digit == space) continue;
    group = group << 6 | (digit == padding ? 0U : digit);
    if (++count % 4 != 0) continue;
    bytes.push_back(static_cast<char>(group >> 16 & 0xFF));
    if (paddings < 2) bytes.push_back(static_cast<char>(group >> 8 & 0xFF));
    if (paddings < 1) bytes.push_back(static_cast<char>(group & 0xFF));
  }
  return bytes;
}

std::string encodeBase64(std::string_view bytes) {
  std::string text;
  text.reserve((bytes.size() + 2) / 3 * 4);
  const auto byte = [&](std::size_t index) {
    return index < bytes.size() ? std::uint32_t{static_cast<unsigned char>(bytes[index])} : 0U;
  };
  for (std::size_t index = 0; index < bytes.size(); index += 3) {
    const std::uint32_t group = byte(index) << 16 | byte(index + 1) << 8 | byte(index + 2);
    text.push_back(alphabet[group >> 18]);
    text.push_back(alphabet[group >> 12 & 0x3F]);
    text.push_back(index + 1 < bytes.size() ? alphabet[group >> 6 & 0x3F] : '=');
    text.push_back(index + 2 < bytes.size() ? alphabet[group & 0x3F] : '=');
  }
  return text;
}
