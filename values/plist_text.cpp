#include "values/plist_text.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <optional>
#include <utility>

namespace {

constexpr char16_t replacement = 0xFFFD;

bool isHighSurrogate(char16_t unit) { return unit >= 0xD800 && unit <= 0xDBFF; }
bool isLowSurrogate(char16_t unit) { return unit >= 0xDC00 && unit <= 0xDFFF; }

// Decodes a text unit by unit.
class UnitReader {
 public:
  explicit UnitReader(const PlistText& text)
      : next_(static_cast<const unsigned char*>(text.start())),
        end_(next_ + text.byteCount()),
        encoding_(text.encoding()) {}

  bool atEnd() const { return next_ == end_ && low_ == 0; }

  char16_t next() {
    switch (encoding_) {
      case PlistEncoding::latin1: return *next_++;
      case PlistEncoding::utf16BigEndian: {
        const auto unit = static_cast<char16_t>(next_[0] << 8 | next_[1]);
        next_ += 2;
        return unit;
      }
      case PlistEncoding::utf16: {
        char16_t unit = 0;
        std::memcpy(&unit, next_, 2);
        next_ += 2;
        return unit;
      }
      case PlistEncoding::utf8: return nextOfUtf8();
    }
    return replacement;
  }

 private:
  // The text is valid UTF-8: the reader of the file has checked it.
  char16_t nextOfUtf8() {
    if (low_ != 0) return std::exchange(low_, u'\0');
    const unsigned char lead = *next_++;
    if (lead < 0x80) return lead;
    if (lead < 0xE0) return static_cast<char16_t>((lead & 0x1F) << 6 | continuation());
    if (lead < 0xF0) {
      const auto high = static_cast<char16_t>((lead & 0x0F) << 12 | continuation() << 6);
      return static_cast<char16_t>(high | continuation());
    }
    char32_t scalar = static_cast<char32_t>(lead & 0x07) << 18;
    scalar |= static_cast<char32_t>(continuation()) << 12;
    scalar |= static_cast<char32_t>(continuation()) << 6;
    scalar |= static_cast<char32_t>(continuation());
    low_ = static_cast<char16_t>(0xDC00 | (scalar & 0x3FF));
    return static_cast<char16_t>(0xD7C0 + (scalar >> 10));
  }

  int continuation() { return *next_++ & 0x3F; }

  const unsigned char* next_;
  const unsigned char* end_;
  PlistEncoding encoding_;
  char16_t low_ = 0;  // the low surrogate of a pair whose high surrogate was returned last
};

void appendUtf8(std::string& text, char32_t scalar) {
  if (scalar < 0x80) {
    text.push_back(static_cast<char>(scalar));
    return;
  }
  const int continuations = scalar < 0x800 ? 1 : scalar < 0x10000 ? 2 : 3;
  constexpr std::array<unsigned char, 4> leads = {0, 0xC0, 0xE0, 0xF0};
  text.push_back(static_cast<char>(leads[static_cast<std::size_t>(continuations)] | scalar >> (6 * continuations)));
  for (int shift = 6 * (continuations - 1); shift >= 0; shift -= 6)
    text.push_back(static_cast<char>(0x80 | (scalar >> shift & 0x3F)));
}

// Returns the length of the well-formed UTF-8 sequence at the start of `text`, or 0.
std::size_t sequenceLength(std::string_view text) {
  const auto byte = [&](std::size_t index) { return static_cast<unsigned char>(text[index]); };
  const unsigned char lead = byte(0);
  if (lead < 0x80) return 1;
  const std::size_t length = lead >= 0xC2 && lead <= 0xDF   ? 2
                             : (lead & 0xF0) == 0xE0        ? 3
                             : lead >= 0xF0 && lead <= 0xF4 ? 4
                                                            : 0;
  if (length == 0 || text.size() < length) return 0;
  for (std::size_t index = 1; index < length; ++index)
    if ((byte(index) & 0xC0) != 0x80) return 0;
  const unsigned char second = byte(1);
  const bool overlong = (lead == 0xE0 && second < 0xA0) || (lead == 0xF0 && second < 0x90);
  const bool outside = (lead == 0xED && second > 0x9F) || (lead == 0xF4 && second > 0x8F);
  return overlong || outside ? 0 : length;
}

// Compares a text of single bytes with units, which is the common case. Returns nothing if the text is not ASCII.
std::optional<bool> equalIfAscii(const PlistText& text, const char16_t* units, std::size_t count) {
  const auto* bytes = static_cast<const unsigned char*>(text.start());
  if (text.count() != count) return text.encoding() == PlistEncoding::utf8 ? std::nullopt : std::optional(false);
  for (std::size_t index = 0; index < count; ++index) {
    if (bytes[index] >= 0x80) return std::nullopt;
    if (bytes[index] != units[index]) return false;
  }
  return true;
}

}  // namespace

std::u16string PlistText::utf16() const {
  std::u16string units;
  appendTo(units);
  return units;
}

std::u16string PlistText::utf16(std::size_t most) const {
  std::u16string units;
  for (UnitReader reader(*this); !reader.atEnd() && units.size() < most;) units.push_back(reader.next());
  return units;
}

void PlistText::appendTo(std::u16string& units) const {
  if (encoding_ == PlistEncoding::utf16) {
    units.append(static_cast<const char16_t*>(start_), count_);
    return;
  }
  const auto* bytes = static_cast<const unsigned char*>(start_);
  if (encoding_ == PlistEncoding::latin1 ||
      (encoding_ == PlistEncoding::utf8 &&
       std::all_of(bytes, bytes + count_, [](unsigned char b) { return b < 0x80; }))) {
    const std::size_t size = units.size();
    units.resize(size + count_);
    std::copy_n(bytes, count_, units.begin() + static_cast<std::ptrdiff_t>(size));
    return;
  }
  if (encoding_ == PlistEncoding::utf16BigEndian) {
    const std::size_t size = units.size();
    units.resize(size + count_);
    for (std::size_t index = 0; index < count_; ++index)
      units[size + index] = static_cast<char16_t>(bytes[2 * index] << 8 | bytes[2 * index + 1]);
    return;
  }
  for (UnitReader reader(*this); !reader.atEnd();) units.push_back(reader.next());
}

std::uint32_t PlistText::hash() const {
  std::uint32_t hash = plistHashStart;
  if (encoding_ == PlistEncoding::latin1 || encoding_ == PlistEncoding::utf8) {
    // A byte of ASCII or Latin-1 is a unit.
    const auto* byte = static_cast<const unsigned char*>(start_);
    const auto* end = byte + count_;
    while (byte != end && (*byte < 0x80 || encoding_ == PlistEncoding::latin1)) hash = plistHashStep(hash, *byte++);
    if (byte == end) return hash;
    hash = plistHashStart;
  }
  for (UnitReader reader(*this); !reader.atEnd();) hash = plistHashStep(hash, reader.next());
  return hash;
}

bool PlistText::startsWith(std::u16string_view prefix) const {
  // The first unit nearly always decides.
  if (prefix.empty()) return true;
  if (empty() || UnitReader(*this).next() != prefix.front()) return false;
  UnitReader reader(*this);
  return std::all_of(prefix.begin(), prefix.end(),
                     [&](char16_t unit) { return !reader.atEnd() && reader.next() == unit; });
}

bool operator==(const PlistText& a, const PlistText& b) {
  if (a.encoding_ == b.encoding_)
    return a.count_ == b.count_ && (a.isAt(b) || std::memcmp(a.start_, b.start_, a.byteCount()) == 0);
  if (b.encoding_ == PlistEncoding::utf16 && a.encoding_ != PlistEncoding::utf16BigEndian)
    if (const std::optional<bool> equal = equalIfAscii(a, static_cast<const char16_t*>(b.start_), b.count_))
      return *equal;
  // The count of UTF-8 is in bytes, so it cannot be compared with the count of another encoding.
  if (a.encoding_ != PlistEncoding::utf8 && b.encoding_ != PlistEncoding::utf8 && a.count_ != b.count_) return false;
  UnitReader left(a);
  UnitReader right(b);
  while (!left.atEnd() && !right.atEnd())
    if (left.next() != right.next()) return false;
  return left.atEnd() && right.atEnd();
}

bool isWellFormedUtf8(std::string_view text) {
  while (!text.empty()) {
    const std::size_t length = sequenceLength(text);
    if (length == 0) return false;
    text.remove_prefix(length);
  }
  return true;
}

std::string utf8(std::u16string_view units) {
  std::string text;
  text.reserve(units.size());
  for (std::size_t index = 0; index < units.size(); ++index) {
    const char16_t unit = units[index];
    if (isHighSurrogate(unit) && index + 1 < units.size() && isLowSurrogate(units[index + 1])) {
      appendUtf8(text, 0x10000U + (static_cast<char32_t>(unit - 0xD800) << 10) + (units[index + 1] - 0xDC00U));
      ++index;
    } else {
      appendUtf8(text, isHighSurrogate(unit) || isLowSurrogate(unit) ? replacement : unit);
    }
  }
  return text;
}

std::u16string utf16(std::string_view text) {
  std::u16string units;
  units.reserve(text.size());
  while (!text.empty()) {
    const std::size_t length = sequenceLength(text);
    if (length == 0)
      units.push_back(replacement);
    else
      PlistText(text.data(), length, PlistEncoding::utf8).appendTo(units);
    text.remove_prefix(std::max<std::size_t>(length, 1));
  }
  return units;
}
