#include "platform/linux/plist/old_style_reader.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <optional>
#include <string>
#include <string_view>

#include "platform/linux/plist/document_builder.h"
#include "platform/linux/plist/text_scanner.h"

namespace {

// Octal escapes above \177 are characters of the NeXTSTEP character set. This is its upper half.
constexpr std::array<char16_t, 128> nextStepUpperHalf = {
    0x00A0, 0x00C0, 0x00C1, 0x00C2, 0x00C3, 0x00C4, 0x00C5, 0x00C7, 0x00C8, 0x00C9, 0x00CA, 0x00CB, 0x00CC,
    0x00CD, 0x00CE, 0x00CF, 0x00D0, 0x00D1, 0x00D2, 0x00D3, 0x00D4, 0x00D5, 0x00D6, 0x00D9, 0x00DA, 0x00DB,
    0x00DC, 0x00DD, 0x00DE, 0x00B5, 0x00D7, 0x00F7, 0x00A9, 0x00A1, 0x00A2, 0x00A3, 0x2044, 0x00A5, 0x0192,
    0x00A7, 0x00A4, 0x2019, 0x201C, 0x00AB, 0x2039, 0x203A, 0xFB01, 0xFB02, 0x00AE, 0x2013, 0x2020, 0x2021,
    0x00B7, 0x00A6, 0x00B6, 0x2022, 0x201A, 0x201E, 0x201D, 0x00BB, 0x2026, 0x2030, 0x00AC, 0x00BF, 0x00B9,
    0x02CB, 0x00B4, 0x02C6, 0x02DC, 0x00AF, 0x02D8, 0x02D9, 0x00A8, 0x00B2, 0x02DA, 0x00B8, 0x00B3, 0x02DD,
    0x02DB, 0x02C7, 0x2014, 0x00B1, 0x00BC, 0x00BD, 0x00BE, 0x00E0, 0x00E1, 0x00E2, 0x00E3, 0x00E4, 0x00E5,
    0x00E7, 0x00E8, 0x00E9, 0x00EA, 0x00EB, 0x00EC, 0x00C6, 0x00ED, 0x00AA, 0x00EE, 0x00EF, 0x00F0, 0x00F1,
    0x0141, 0x00D8, 0x0152, 0x00BA, 0x00F2, 0x00F3, 0x00F4, 0x00F5, 0x00F6, 0x00E6, 0x00F9, 0x00FA, 0x00FB,
    0x0131, 0x00FC, 0x00FD, 0x0142, 0x00F8, 0x0153, 0x00DF, 0x00FE, 0x00FF, 0xFFFD, 0xFFFD};

// The line and paragraph separators, U+2028 and U+2029, are white space and end a line comment.
constexpr std::string_view lineSeparator = "\xE2\x80\xA8";
constexpr std::string_view paragraphSeparator = "\xE2\x80\xA9";

bool isWordCharacter(char character) {
  return (character >= 'a' && character <= 'z') || (character >= 'A' && character <= 'Z') ||
         (character >= '0' && character <= '9') ||
         (character != '\0' && std::string_view("_$/:.-").find(character) != std::string_view::npos);
}

class OldStyleReader : private TextScanner {
 public:
  explicit OldStyleReader(const Bytes& text) : TextScanner(text), builder_(text) { requireUtf8InEachLine(); }

  PlistValue read() {
    skipSpace();
    if (next_ == end_) {
      builder_.open(0);
      return builder_.finish(builder_.closeDictionary(0), PlistDocument::Xml::none);
    }
    const bool string = isStringStart(*next_);
    const std::uint32_t root = readObject(1);
    skipSpace();
    if (next_ == end_) return builder_.finish(root, PlistDocument::Xml::none);
    if (!string) throw here("unexpected text after the end of the property list");
    next_ = begin_;
    return builder_.finish(readEntries(1), PlistDocument::Xml::none);
  }

 private:
  // Checks line by line to name the line of a malformed character.
  void requireUtf8InEachLine() const {
    if (isWellFormedUtf8({begin_, static_cast<std::size_t>(end_ - begin_)})) return;
    for (const char* line = begin_; line != end_;) {
      const char* lineEnd = std::find(line, end_, '\n');
      requireUtf8({line, static_cast<std::size_t>(lineEnd - line)}, line);
      line = lineEnd == end_ ? end_ : lineEnd + 1;
    }
  }

  static bool isStringStart(char character) {
    return character == '"' || character == '\'' || isWordCharacter(character);
  }

  // Reads an object of any kind. `level` is the number of containers around it, itself included.
  std::uint32_t readObject(unsigned level) {
    skipSpace();
    if (next_ == end_) throw here(unexpectedEnd);
    switch (*next_) {
      case '{': {
        const char* start = next_++;
        requireLevel(level, start);
        const std::uint32_t dictionary = readEntries(level);
        expect('}', "a dictionary without its closing brace");
        return dictionary;
      }
      case '(': return readArray(level);
      case '<': return readData();
      default: return readString();
    }
  }

  std::uint32_t readArray(unsigned level) {
    const char* start = next_++;
    requireLevel(level, start);
    builder_.open(offset(next_));
    while (true) {
      skipSpace();
      if (next_ == end_ || *next_ == ')') break;
      builder_.element(readObject(level + 1));
      skipSpace();
      if (next_ == end_ || *next_ != ',') break;
      ++next_;
    }
    expect(')', "an array with a missing comma or closing parenthesis");
    return builder_.closeArray();
  }

  // Reads entries until something else follows: `key = value;`, or `key;`, whose value is the key.
  std::uint32_t readEntries(unsigned level) {
    builder_.open(offset(next_));
    for (skipSpace(); next_ != end_ && isStringStart(*next_); skipSpace()) {
      const std::uint32_t string = readString();
      skipSpace();
      std::uint32_t value = string;
      if (next_ != end_ && *next_ == '=') {
        ++next_;
        value = readObject(level + 1);
        skipSpace();
      }
      builder_.entry(builder_.key(string), value);
      expect(';', "a dictionary entry without ‘=’ or ‘;’");
    }
    return builder_.closeDictionary(offset(next_));
  }

  std::uint32_t readString() {
    if (*next_ == '"' || *next_ == '\'') return readQuoted();
    const char* start = next_;
    while (next_ != end_ && isWordCharacter(*next_)) ++next_;
    if (next_ == start) throw here("an unexpected character");
    return sourceText(start, next_);
  }

  std::uint32_t readQuoted() {
    const char quote = *next_;
    const char* start = ++next_;
    while (next_ != end_ && *next_ != quote && *next_ != '\\') ++next_;
    if (next_ != end_ && *next_ == quote) return sourceText(start, next_++);
    return readEscaped(start, quote);
  }

  std::uint32_t readEscaped(const char* start, char quote) {
    std::u16string units;
    const char* plain = start;  // the characters up to next_, which have no escapes
    const auto appendPlain = [&] {
      PlistText(plain, static_cast<std::size_t>(next_ - plain), PlistEncoding::utf8).appendTo(units);
    };
    while (next_ != end_ && *next_ != quote) {
      if (*next_ != '\\') {
        ++next_;
        continue;
      }
      appendPlain();
      ++next_;
      if (next_ == end_) break;
      appendEscape(units);
      plain = next_;
    }
    if (next_ == end_) throw at(start, "an unterminated quoted string");
    appendPlain();
    ++next_;
    return builder_.addText(units);
  }

  // Decodes the characters after a backslash: a C escape, up to three octal digits, or U and up to four hexadecimal
  // digits. Any other character is itself.
  void appendEscape(std::u16string& units) {
    const char character = *next_;
    if (character >= '0' && character <= '7') {
      units.push_back(nextStepCharacter(readNumber(8, 3)));
      return;
    }
    if (character == 'U') {
      ++next_;
      units.push_back(static_cast<char16_t>(readNumber(16, 4)));
      return;
    }
    constexpr std::string_view letters = "abfnrtv";
    constexpr std::string_view meanings = "\a\b\f\n\r\t\v";
    const std::size_t letter = letters.find(character);
    if (letter != std::string_view::npos && character != '\0') {
      units.push_back(static_cast<char16_t>(meanings[letter]));
      ++next_;
    } else if ((character & 0x80) == 0) {
      units.push_back(static_cast<char16_t>(character));
      ++next_;
    }
    // A character outside ASCII is left to the caller, as plain text.
  }

  static char16_t nextStepCharacter(unsigned number) {
    const unsigned byte = number & 0xFF;
    return byte < 0x80 ? static_cast<char16_t>(byte) : nextStepUpperHalf[byte - 0x80];
  }

  unsigned readNumber(int base, int mostDigits) {
    unsigned number = 0;
    for (; mostDigits > 0 && next_ != end_; --mostDigits, ++next_) {
      const int digit = hexadecimalDigit(*next_);
      if (digit < 0 || digit >= base) break;
      number = number * static_cast<unsigned>(base) + static_cast<unsigned>(digit);
    }
    return number;
  }

  std::uint32_t readData() {
    ++next_;
    std::string bytes;
    std::optional<int> high;
    for (; next_ != end_ && *next_ != '>'; ++next_) {
      const int digit = hexadecimalDigit(*next_);
      if (digit < 0) {
        if (high) throw here(oddDigits);
        if (const std::size_t length = dataSpaceLength(); length != 0) {
          next_ += length - 1;
          continue;
        }
        throw here("a character other than a hexadecimal digit in data");
      }
      if (high) bytes.push_back(static_cast<char>(*high << 4 | digit));
      high = high ? std::nullopt : std::optional(digit);
    }
    if (high) throw here(oddDigits);
    expect('>', "data without its closing ‘>’");
    return builder_.addData(bytes);
  }

  std::size_t dataSpaceLength() const {
    if (std::string_view(" \t\n\r").find(*next_) != std::string_view::npos) return *next_ == '\0' ? 0 : 1;
    return startsWith(lineSeparator) || startsWith(paragraphSeparator) ? lineSeparator.size() : 0;
  }

  std::uint32_t sourceText(const char* start, const char* end) {
    return builder_.addSourceText(offset(start), static_cast<std::size_t>(end - start), false);
  }

  // Skips white space and comments.
  void skipSpace() {
    while (next_ != end_) {
      if (*next_ == ' ' || (*next_ >= '\t' && *next_ <= '\r')) {
        ++next_;
      } else if (startsWith(lineSeparator) || startsWith(paragraphSeparator)) {
        next_ += lineSeparator.size();
      } else if (startsWith("//")) {
        skipLineComment();
      } else if (startsWith("/*")) {
        const std::string_view rest(next_ + 2, static_cast<std::size_t>(end_ - next_ - 2));
        const std::size_t close = rest.find("*/");
        next_ = close == std::string_view::npos ? end_ : next_ + close + 4;
      } else {
        return;
      }
    }
  }

  void skipLineComment() {
    while (next_ != end_ && *next_ != '\n' && *next_ != '\r' && !startsWith(lineSeparator) &&
           !startsWith(paragraphSeparator))
      ++next_;
  }

  void expect(char wanted, const char* problem) {
    skipSpace();
    if (next_ == end_ || *next_ != wanted) throw here(problem);
    ++next_;
  }

  static constexpr const char* oddDigits = "an odd number of hexadecimal digits in data";

  Error here(const std::string& problem) const { return at(next_, problem); }

  DocumentBuilder builder_;
};

}  // namespace

PlistValue readOldStyle(const Bytes& text) { return OldStyleReader(text).read(); }
