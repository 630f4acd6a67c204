// The base of the scanners of both text formats: a position in a text, and errors with its line.
#pragma once

#include <cstddef>
#include <cstring>
#include <string>
#include <string_view>

#include "platform/linux/plist/plist_error.h"
#include "platform/posix/stack_levels.h"
#include "values/bytes.h"
#include "values/plist_document.h"
#include "values/plist_text.h"

class TextScanner {
 protected:
  explicit TextScanner(const Bytes& text) : begin_(text.text().data()), next_(begin_), end_(begin_ + text.size()) {}

  bool startsWith(std::string_view text) const {
    return static_cast<std::size_t>(end_ - next_) >= text.size() && std::memcmp(next_, text.data(), text.size()) == 0;
  }

  std::size_t offset(const char* place) const { return static_cast<std::size_t>(place - begin_); }

  // Returns an error with the line of a place. Lines end with CR, LF or CR LF.
  Error at(const char* place, const std::string& problem) const {
    const std::string_view before(begin_, offset(place));
    std::size_t line = 1;
    for (std::size_t index = 0; index < before.size(); ++index) {
      const bool half = before[index] == '\r' && index + 1 < before.size() && before[index + 1] == '\n';
      if (before[index] == '\n' || (before[index] == '\r' && !half)) ++line;
    }
    return unreadable(problem + " on line " + std::to_string(line));
  }

  // Throws if a container is nested too deeply; `level` is the number of containers around it, itself included.
  void requireLevel(unsigned level, const char* place) const {
    if (level > mostLevels_) throw at(place, tooManyLevels(mostLevels_));
  }

  // Throws an error with the line of `place` if a text is not UTF-8.
  void requireUtf8(std::string_view text, const char* place) const {
    if (!isWellFormedUtf8(text)) throw at(place, "invalid UTF-8");
  }

  // Returns the value of a hexadecimal digit, or -1.
  static int hexadecimalDigit(char character) {
    if (character >= '0' && character <= '9') return character - '0';
    if (character >= 'a' && character <= 'f') return character - 'a' + 10;
    if (character >= 'A' && character <= 'F') return character - 'A' + 10;
    return -1;
  }

  static constexpr const char* unexpectedEnd = "an unexpected end of the file";

  const char* begin_;
  const char* next_;  // the next character to scan
  const char* end_;

 private:
  unsigned mostLevels_ = stackLevels();
};
