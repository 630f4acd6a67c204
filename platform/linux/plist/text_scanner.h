// What the scanners of both text formats have in common: a place in a text, and errors that name its line.
#pragma once

#include <cstddef>
#include <cstring>
#include <string>
#include <string_view>

#include "values/bytes.h"
#include "values/plist_document.h"
#include "values/plist_text.h"
#include "platform/linux/plist/plist_error.h"

class TextScanner {
 protected:
  explicit TextScanner(const Bytes& text) : begin_(text.text().data()), next_(begin_), end_(begin_ + text.size()) {}

  bool startsWith(std::string_view text) const {
    return static_cast<std::size_t>(end_ - next_) >= text.size() && std::memcmp(next_, text.data(), text.size()) == 0;
  }

  std::size_t offset(const char* place) const { return static_cast<std::size_t>(place - begin_); }

  // An error on the line of a place. Lines end at a carriage return, a line feed, or both together.
  Error at(const char* place, const std::string& problem) const {
    const std::string_view before(begin_, offset(place));
    std::size_t line = 1;
    for (std::size_t index = 0; index < before.size(); ++index) {
      const bool half = before[index] == '\r' && index + 1 < before.size() && before[index + 1] == '\n';
      if (before[index] == '\n' || (before[index] == '\r' && !half)) ++line;
    }
    return unreadable(problem + " on line " + std::to_string(line));
  }

  // Refuses a container that lies too deep; `level` counts those down to it, itself included.
  void requireLevel(unsigned level, const char* place) const {
    if (level > plistMaximumDepth)
      throw at(place, "more than " + std::to_string(plistMaximumDepth) + " arrays or dictionaries one in another,");
  }

  // Refuses a text that is not UTF-8; the error names the line of `place`.
  void requireUtf8(std::string_view text, const char* place) const {
    if (!isWellFormedUtf8(text)) throw at(place, "a text that is not valid UTF-8");
  }

  // The value of a hexadecimal digit, or -1.
  static int hexadecimalDigit(char character) {
    if (character >= '0' && character <= '9') return character - '0';
    if (character >= 'a' && character <= 'f') return character - 'a' + 10;
    if (character >= 'A' && character <= 'F') return character - 'A' + 10;
    return -1;
  }

  const char* begin_;
  const char* next_;  // what is scanned next
  const char* end_;
};
