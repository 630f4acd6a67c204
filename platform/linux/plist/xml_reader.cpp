#include "platform/linux/plist/xml_reader.h"

#include <absl/strings/numbers.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>
#include <cstring>
#include <limits>
#include <string>
#include <string_view>

#include "platform/linux/plist/date_text.h"
#include "platform/linux/plist/document_builder.h"
#include "platform/linux/plist/text_scanner.h"
#include "values/base64.h"
#include "values/byte_block.h"

namespace {

bool isSpace(char character) { return character == ' ' || character == '\t' || character == '\n' || character == '\r'; }

constexpr std::ptrdiff_t blockSize = ByteBlock::size;

// The characters that end a run of plain text. '>' is legal text, but a writer escapes it.
bool isSpecial(char character) { return character == '<' || character == '&' || character == '>'; }

// Returns the first special character at or after `text`. Sets `isAscii` to false if a character before it is not
// ASCII.
const char* findSpecial(const char* text, const char* end, bool& isAscii) {
  for (; end - text >= blockSize; text += blockSize) {
    const ByteBlock block(text);
    constexpr char difference = '<' ^ '>';
    const ByteSet found = block.equalExceptFor(difference, '<') | block.equal('&');
    const ByteSet before = found == 0 ? ByteBlock::all : (found & (0 - found)) - 1;
    if ((block.high() & before) != 0) isAscii = false;
    if (found != 0) return text + std::countr_zero(found);
  }
  for (; text != end && !isSpecial(*text); ++text)
    if ((*text & 0x80) != 0) isAscii = false;
  return text;
}

// Returns the end of a run of tabs. Most white space in these files is tabs.
const char* skipTabs(const char* text, const char* end) {
  for (; end - text >= blockSize; text += blockSize) {
    const ByteSet others = ByteBlock(text).equal('\t') ^ ByteBlock::all;
    if (others != 0) return text + std::countr_zero(others);
  }
  return text;
}

enum class Element { array, dictionary, string, key, data, date, integer, real, truth, falsehood, plist, unknown };

// Selects a candidate by the length and one letter, then compares the name once.
Element elementOf(std::string_view name) {
  const auto named = [&](std::string_view candidate, Element element) {
    return name == candidate ? element : Element::unknown;
  };
  switch (name.size()) {
    case 3: return named("key", Element::key);
    case 4:
      if (name[0] == 't') return named("true", Element::truth);
      if (name[0] == 'r') return named("real", Element::real);
      if (name[1] == 'i') return named("dict", Element::dictionary);
      return name[3] == 'a' ? named("data", Element::data) : named("date", Element::date);
    case 5:
      if (name[0] == 'a') return named("array", Element::array);
      return name[0] == 'f' ? named("false", Element::falsehood) : named("plist", Element::plist);
    case 6: return named("string", Element::string);
    case 7: return named("integer", Element::integer);
    default: return Element::unknown;
  }
}

// A tag as nearly all files have it: without attributes or white space.
struct PlainTag {
  std::string_view opening;
  std::string_view closing;
  Element element;
};
constexpr PlainTag stringTag{"<string>", "</string>", Element::string};
constexpr PlainTag keyTag{"<key>", "</key>", Element::key};
constexpr PlainTag dataTag{"<data>", "</data>", Element::data};
constexpr PlainTag dictionaryTag{"<dict>", "</dict>", Element::dictionary};
constexpr PlainTag arrayTag{"<array>", "</array>", Element::array};

class XmlReader : private TextScanner {
 public:
  // Reads a text from the byte `start` on.
  XmlReader(const Bytes& text, std::size_t start) : TextScanner(text), builder_(text) { next_ += start; }

  PlistValue read(PlistDocument::Xml xml) {
    skipProlog();
    return builder_.finish(readElement(openTag(), 1), xml);
  }

 private:
  struct Tag {
    Element element;
    std::string_view name;
    bool isEmpty;
  };

  // Skips everything before the root element: white space, comments, processing instructions, and a document type
  // declaration without an internal subset.
  void skipProlog() {
    while (true) {
      skipSpace();
      if (end_ - next_ < 2) throw at(next_, "no XML content");
      if (*next_ != '<') throw at(next_, unexpected(*next_));
      if (next_[1] == '?')
        skipPast("?>", unterminatedInstruction);
      else if (startsWith("<!--"))
        skipPast("-->", unterminatedComment);
      else if (next_[1] == '!')
        skipDocumentType();
      else
        return;
    }
  }

  void skipDocumentType() {
    if (!startsWith("<!DOCTYPE")) throw at(next_, "a malformed document type declaration");
    const char* found = std::find_if(next_, end_, [](char character) { return character == '>' || character == '['; });
    if (found == end_) throw at(next_, "an unterminated document type declaration");
    if (*found == '[') throw at(found, "a document type declaration with an internal subset");
    next_ = found + 1;
  }

  // Moves to the next element, past white space, comments and processing instructions. Returns false at a closing tag.
  bool findElement() {
    while (true) {
      skipSpace();
      if (next_ == end_) throw at(next_, unexpectedEnd);
      if (*next_ != '<') throw at(next_, unexpected(*next_) + " instead of an element");
      if (end_ - next_ < 2) throw at(next_, unexpectedEnd);
      switch (next_[1]) {
        case '/': return false;
        case '?': skipPast("?>", unterminatedInstruction); break;
        case '!':
          if (!startsWith("<!--")) throw at(next_, "a declaration between elements");
          next_ += 2;
          skipPast("-->", unterminatedComment);
          break;
        default: return true;
      }
    }
  }

  // Reads an opening tag. Attributes are ignored.
  Tag openTag() {
    switch (end_ - next_ > 1 ? next_[1] : '\0') {
      case 'k':
        if (startsWith(keyTag.opening)) return opened(keyTag);
        break;
      case 's':
        if (startsWith(stringTag.opening)) return opened(stringTag);
        break;
      case 'd':
        if (startsWith(dictionaryTag.opening)) return opened(dictionaryTag);
        if (startsWith(dataTag.opening)) return opened(dataTag);
        break;
      case 'a':
        if (startsWith(arrayTag.opening)) return opened(arrayTag);
        break;
      default: break;
    }
    return openAnyTag();
  }

  Tag opened(const PlainTag& tag) {
    const std::string_view name(next_ + 1, tag.opening.size() - 2);
    next_ += tag.opening.size();
    return {tag.element, name, false};
  }

  Tag openAnyTag() {
    const char* name = ++next_;
    const char* nameEnd = name;
    while (nameEnd != end_ && *nameEnd != '>' && !isSpace(*nameEnd)) ++nameEnd;
    const char* close = std::find(nameEnd, end_, '>');
    if (close == end_) throw at(name, "an unterminated tag");
    const bool isEmpty = close[-1] == '/';
    if (isEmpty && nameEnd == close) --nameEnd;
    if (nameEnd == name) throw at(name, "a tag without a name");
    next_ = close + 1;
    const std::string_view text(name, static_cast<std::size_t>(nameEnd - name));
    const Element element = elementOf(text);
    if (element == Element::unknown)
      throw at(name, isPlainName(text) ? "the unknown element <" + std::string(text) + ">" : "an unknown element");
    return {element, text, isEmpty};
  }

  void closeTag(const Tag& tag) {
    if (!isClosedBy(tag, stringTag) && !isClosedBy(tag, keyTag) && !isClosedBy(tag, dataTag) &&
        !isClosedBy(tag, dictionaryTag) && !isClosedBy(tag, arrayTag))
      closeAnyTag(tag);
  }

  bool isClosedBy(const Tag& tag, const PlainTag& plain) {
    if (tag.element != plain.element || !startsWith(plain.closing)) return false;
    next_ += plain.closing.size();
    return true;
  }

  void closeAnyTag(const Tag& tag) {
    if (end_ - next_ < 2 || next_[0] != '<' || next_[1] != '/')
      throw at(next_,
               next_ == end_ ? unexpectedEnd : unexpected(*next_) + " instead of </" + std::string(tag.name) + ">");
    next_ += 2;
    if (!startsWith(tag.name)) throw at(next_, "a closing tag that does not match <" + std::string(tag.name) + ">");
    next_ += tag.name.size();
    skipSpace();
    if (next_ == end_ || *next_ != '>')
      throw at(next_, "a closing tag that does not match <" + std::string(tag.name) + ">");
    ++next_;
  }

  // Reads the rest of an element after its opening tag. `level` is the number of containers around it, itself included.
  std::uint32_t readElement(const Tag& tag, unsigned level) {
    switch (tag.element) {
      case Element::array: return readArray(tag, level);
      case Element::dictionary: return readDictionary(tag, level);
      case Element::string:
      case Element::key: {
        if (tag.isEmpty) return builder_.addText(std::string_view());
        const std::uint32_t string = readText(false);
        closeTag(tag);
        return string;
      }
      case Element::data: return readData(tag);
      case Element::date: return readDate(tag);
      case Element::integer: return readInteger(tag);
      case Element::real: return readReal(tag);
      case Element::truth:
      case Element::falsehood:
        if (!tag.isEmpty) closeTag(tag);
        return builder_.addBoolean(tag.element == Element::truth);
      case Element::plist: return readPlist(tag, level);
      case Element::unknown: break;
    }
    throw at(tag.name.data(), "an unknown element");
  }

  // The platform's reader accepts nested `plist` elements. The limit protects the stack.
  std::uint32_t readPlist(const Tag& tag, unsigned level) {
    requireLevel(++plists_, tag.name.data());
    if (tag.isEmpty || !findElement()) throw at(tag.name.data(), "an empty <plist>");
    const std::uint32_t root = readElement(openTag(), level);
    if (findElement()) throw at(next_, "a second value in <plist>");
    closeTag(tag);
    --plists_;
    return root;
  }

  std::uint32_t readArray(const Tag& tag, unsigned level) {
    requireLevel(level, tag.name.data());
    builder_.open(offset(tag.name.data() - 1));
    if (!tag.isEmpty) {
      while (findElement()) builder_.element(readElement(openTag(), level + 1));
      closeTag(tag);
    }
    return builder_.closeArray();
  }

  std::uint32_t readDictionary(const Tag& tag, unsigned level) {
    requireLevel(level, tag.name.data());
    builder_.open(offset(tag.name.data() - 1));
    if (!tag.isEmpty) {
      while (findElement()) {
        const Tag opening = openTag();
        if (opening.element != Element::key) throw at(opening.name.data(), "a value without a key in a <dict>");
        const std::uint32_t key = readKey(opening);
        if (!findElement()) throw at(next_, "a key without a value in a <dict>");
        builder_.entry(key, readElement(openTag(), level + 1));
      }
      closeTag(tag);
    }
    return builder_.closeDictionary(offset(next_));
  }

  std::uint32_t readKey(const Tag& tag) {
    if (tag.isEmpty) return builder_.key(builder_.addText(std::string_view()));
    const std::uint32_t key = readText(true);
    closeTag(tag);
    return key;
  }

  // Reads text up to the next tag. Text without escapes stays in the source.
  std::uint32_t readText(bool isKey) {
    const char* start = next_;
    bool isAscii = true;
    const char* special = findSpecial(next_, end_, isAscii);
    bool verbatim = true;
    while (special != end_ && *special == '>') {
      verbatim = false;
      special = findSpecial(special + 1, end_, isAscii);
    }
    if (special == end_) throw at(end_, unexpectedEnd);
    next_ = special;
    if (*special == '&' || startsWith("<!")) return readEscapedText(start, isKey);
    const std::string_view text(start, static_cast<std::size_t>(special - start));
    if (!isAscii) requireUtf8(text, start);
    return isKey ? builder_.sourceKey(offset(start), text.size(), verbatim)
                 : builder_.addSourceText(offset(start), text.size(), verbatim);
  }

  std::uint32_t readEscapedText(const char* start, bool isKey) {
    const std::uint32_t string = builder_.addText(decodeText(start));
    return isKey ? builder_.key(string) : string;
  }

  // Returns the characters from `start` to the next tag, with escapes and CDATA sections decoded.
  std::string decodeText(const char* start) {
    std::string text;
    for (next_ = start; next_ != end_;) {
      if (*next_ == '&') {
        appendReference(text);
      } else if (startsWith("<!")) {
        appendCharacterData(text);
      } else if (*next_ == '<') {
        requireUtf8(text, start);
        return text;
      } else {
        text.push_back(*next_++);
      }
    }
    throw at(next_, unexpectedEnd);
  }

  void appendCharacterData(std::string& text) {
    constexpr std::string_view opening = "<![CDATA[";
    if (!startsWith(opening)) throw at(next_, "a comment or declaration inside text");
    const char* start = next_ + opening.size();
    skipPast("]]>", "an unterminated CDATA section");
    text.append(start, next_ - 3);
  }

  void appendReference(std::string& text) {
    struct Entity {
      std::string_view name;
      char character;
    };
    constexpr std::array<Entity, 5> entities = {
        {{"&lt;", '<'}, {"&gt;", '>'}, {"&amp;", '&'}, {"&apos;", '\''}, {"&quot;", '"'}}};
    for (const Entity& entity : entities) {
      if (!startsWith(entity.name)) continue;
      text.push_back(entity.character);
      next_ += entity.name.size();
      return;
    }
    if (!startsWith("&#")) throw at(next_, "an unknown entity");
    appendNumericReference(text);
  }

  void appendNumericReference(std::string& text) {
    const char* reference = next_;
    next_ += 2;
    const bool isHexadecimal = next_ != end_ && *next_ == 'x';
    if (isHexadecimal) ++next_;
    constexpr std::ptrdiff_t mostDigits = 8;
    const char* start = next_;
    std::uint64_t number = 0;
    for (; next_ != end_ && *next_ != ';'; ++next_) {
      const int digit = hexadecimalDigit(*next_);
      if (digit < 0 || (!isHexadecimal && digit > 9) || next_ - start >= mostDigits)
        throw at(reference, malformedReference);
      number = number * (isHexadecimal ? 16 : 10) + static_cast<unsigned>(digit);
    }
    if (next_ == end_) throw at(reference, malformedReference);
    ++next_;
    if (number > 0x10FFFF || (number >= 0xD800 && number <= 0xDFFF))
      throw at(reference, "a reference to an invalid Unicode character");
    std::u16string units;
    if (number < 0x10000) {
      units.push_back(static_cast<char16_t>(number));
    } else {
      units.push_back(static_cast<char16_t>(0xD7C0 + (number >> 10)));
      units.push_back(static_cast<char16_t>(0xDC00 | (number & 0x3FF)));
    }
    text += utf8(units);
  }

  std::uint32_t readData(const Tag& tag) {
    if (tag.isEmpty) throw at(tag.name.data(), "an empty <data/>");
    const char* start = next_;
    const auto* close = static_cast<const char*>(std::memchr(next_, '<', static_cast<std::size_t>(end_ - next_)));
    if (close == nullptr) throw at(end_, unexpectedEnd);
    next_ = close;
    const std::string_view text(start, static_cast<std::size_t>(close - start));
    std::uint32_t data = 0;
    if (isCanonicalBase64(text)) {
      data = builder_.addSourceBase64(offset(start), text.size());
    } else {
      const auto high = std::find_if(text.begin(), text.end(), [](char character) { return (character & 0x80) != 0; });
      if (high != text.end()) throw at(&*high, "a non-ASCII character in <data>");
      data = builder_.addData(decodeBase64(text));
    }
    closeTag(tag);
    return data;
  }

  std::uint32_t readDate(const Tag& tag) {
    const auto date = tag.isEmpty ? std::nullopt : parseDateText({next_, static_cast<std::size_t>(end_ - next_)});
    if (!date) throw at(tag.name.data(), "an invalid <date>");
    next_ += date->length;
    closeTag(tag);
    return builder_.addDate(date->seconds);
  }

  std::uint32_t readReal(const Tag& tag) {
    if (tag.isEmpty) throw at(tag.name.data(), "an empty <real/>");
    const char* start = next_;
    const auto number = realOf(decodeText(start));
    if (!number) throw at(start, "an invalid <real>");
    closeTag(tag);
    return builder_.addReal(*number);
  }

  static std::optional<double> realOf(std::string_view text) {
    std::string lower(text);
    std::transform(lower.begin(), lower.end(), lower.begin(),
                   [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; });
    if (lower == "nan") return std::numeric_limits<double>::quiet_NaN();
    if (lower == "inf" || lower == "+inf" || lower == "infinity" || lower == "+infinity")
      return std::numeric_limits<double>::infinity();
    if (lower == "-inf" || lower == "-infinity") return -std::numeric_limits<double>::infinity();
    const std::size_t first = text.find_first_not_of(" \t\n\v\f\r");
    if (first == std::string_view::npos) return std::nullopt;
    text.remove_prefix(first);
    if (text.find_first_not_of("0123456789+-.eE") != std::string_view::npos) return std::nullopt;
    double number = 0;
    return absl::SimpleAtod({text.data(), text.size()}, &number) ? std::optional(number) : std::nullopt;
  }

  std::uint32_t readInteger(const Tag& tag) {
    if (tag.isEmpty) throw at(tag.name.data(), "an empty <integer>");
    skipNumberSpace();
    if (next_ != end_ && *next_ == '<') throw at(next_, "an empty <integer>");
    const bool negative = next_ != end_ && *next_ == '-';
    if (next_ != end_ && (*next_ == '-' || *next_ == '+')) {
      ++next_;
      skipNumberSpace();
    }
    const bool hexadecimal = startsWith("0x") || startsWith("0X");
    if (hexadecimal) next_ += 2;
    const std::uint64_t magnitude = readDigits(hexadecimal ? 16 : 10);
    if (negative && magnitude > std::uint64_t{1} << 63) throw at(next_, "an <integer> out of range");
    closeTag(tag);
    return builder_.addInteger(negative && magnitude != 0 ? PlistInteger::fromBits(0 - magnitude, true)
                                                          : PlistInteger(magnitude));
  }

  std::uint64_t readDigits(std::uint64_t base) {
    const char* start = next_;
    std::uint64_t magnitude = 0;
    for (; next_ != end_ && *next_ != '<'; ++next_) {
      const int digit = hexadecimalDigit(*next_);
      if (digit < 0 || static_cast<std::uint64_t>(digit) >= base)
        throw at(next_, unexpected(*next_) + " in an <integer>");
      const auto value = static_cast<std::uint64_t>(digit);
      if (magnitude > (std::numeric_limits<std::uint64_t>::max() - value) / base)
        throw at(next_, "an <integer> out of range");
      magnitude = magnitude * base + value;
    }
    if (next_ == end_) throw at(next_, unexpectedEnd);
    if (next_ == start) throw at(next_, "an <integer> without digits");
    return magnitude;
  }

  // Skips white space before a number, as the platform's reader does: bytes up to 0x20 and from 0x7F to 0xA0, and the
  // wide spaces of Unicode.
  void skipNumberSpace() {
    while (next_ != end_) {
      const auto byte = static_cast<unsigned char>(*next_);
      const bool control = byte < 0x21 || (byte > 0x7E && byte < 0xA1);
      // Like the platform's reader, skip one byte only. The other two bytes of a wide space are skipped as control
      // characters, except the last one of U+202F.
      if (!control && !(end_ - next_ >= 3 && isWideSpace(std::string_view(next_, 3)))) return;
      ++next_;
    }
  }

  static bool isWideSpace(std::string_view bytes) {
    const auto last = static_cast<unsigned char>(bytes[2]);
    if (bytes.starts_with("\xE2\x80")) return last <= 0x8B || last == 0xAF;
    return bytes == "\xE2\x81\x9F" || bytes == "\xE3\x80\x80";
  }

  void skipSpace() {
    if (next_ != end_ && *next_ == '\n') next_ = skipTabs(next_ + 1, end_);
    while (next_ != end_ && isSpace(*next_)) ++next_;
  }

  void skipPast(std::string_view closing, const char* problem) {
    const std::string_view rest(next_, static_cast<std::size_t>(end_ - next_));
    const std::size_t found = rest.find(closing);
    if (found == std::string_view::npos) throw at(next_, problem);
    next_ += found + closing.size();
  }

  static std::string unexpected(char character) {
    const auto byte = static_cast<unsigned char>(character);
    if (byte >= 0x21 && byte <= 0x7E) return std::string("an unexpected character ‘") + character + "’";
    constexpr std::string_view digits = "0123456789ABCDEF";
    return std::string("an unexpected byte 0x") + digits[byte >> 4] + digits[byte & 0xF];
  }

  static constexpr const char* unterminatedInstruction = "an unterminated processing instruction";
  static constexpr const char* unterminatedComment = "an unterminated comment";
  static constexpr const char* malformedReference = "a malformed character reference";

  DocumentBuilder builder_;
  unsigned plists_ = 0;  // open `plist` elements
};

}  // namespace

PlistValue readXml(const Bytes& file, const Bytes& text) {
  const bool isPart = text.data() + text.size() == file.data() + file.size();
  return isPart ? XmlReader(file, file.size() - text.size()).read(PlistDocument::Xml::original)
                : XmlReader(text, 0).read(PlistDocument::Xml::converted);
}
