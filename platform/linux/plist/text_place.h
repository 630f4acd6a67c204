// Small things that both text formats need.
#pragma once

#include <cstddef>
#include <string_view>

// The number of the line that follows a text, counted from 1. Lines end at a carriage return, a line feed, or
// both together.
inline std::size_t lineOf(std::string_view before) {
  std::size_t line = 1;
  for (std::size_t index = 0; index < before.size(); ++index) {
    const bool half = before[index] == '\r' && index + 1 < before.size() && before[index + 1] == '\n';
    if (before[index] == '\n' || (before[index] == '\r' && !half)) ++line;
  }
  return line;
}

// The value of a hexadecimal digit, or -1.
inline int hexadecimalDigit(char character) {
  if (character >= '0' && character <= '9') return character - '0';
  if (character >= 'a' && character <= 'f') return character - 'a' + 10;
  if (character >= 'A' && character <= 'F') return character - 'A' + 10;
  return -1;
}
