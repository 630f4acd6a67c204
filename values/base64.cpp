#include "values/base64.h"

#include <algorithm>
#include <array>
#include <cstdint>

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

// Has neither a branch nor a table look-up per character, so that the compiler can vectorise it.
bool isAllDigits(std::string_view text) {
  unsigned char others = 0;
  for (const char character : text) {
    const auto byte = static_cast<unsigned char>(character);
    const bool letter = static_cast<unsigned char>((byte | 0x20) - 'a') < 26;
    const bool number = static_cast<unsigned char>(byte - '/') < 11;  // and the slash, which precedes the digits
    others |= static_cast<unsigned char>(!(letter | number | (byte == '+')));
  }
  return others == 0;
}

}  // namespace

bool isCanonicalBase64(std::string_view text) {
  std::size_t count = 0;
  std::uint8_t last = 0;
  std::size_t index = 0;
  while (index < text.size()) {
    const std::size_t line = index;
    const std::size_t end = std::min(text.find('\n', index), text.size());
    while (index < end && digitOf(text[index]) == space) ++index;
    if (isAllDigits(text.substr(index, end - index))) {
      count += end - index;
      if (end > index) last = digitOf(text[end - 1]);
      index = std::min(end + 1, text.size());
      continue;
    }
    index = line;
    break;
  }
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
