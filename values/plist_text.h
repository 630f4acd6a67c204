// The text of a property-list string: a view of its stored bytes. A string is a sequence of UTF-16 code units, as on
// the platform that owns the format: it may have unpaired surrogates, and two strings are equal if their units are
// equal, whatever their encodings.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

enum class PlistEncoding : std::uint8_t {
  latin1,          // one byte per unit: the ASCII strings of the binary format, in which a high byte is Latin-1
  utf8,            // valid UTF-8, without surrogates
  utf16BigEndian,  // two bytes per unit, the high byte first, at any alignment
  utf16,           // char16_t units
};

// A hash of UTF-16 units (FNV-1a), so it does not depend on the encoding.
inline constexpr std::uint32_t plistHashStart = 2166136261U;
constexpr std::uint32_t plistHashStep(std::uint32_t hash, char16_t unit) { return (hash ^ unit) * 16777619U; }

class PlistText {
 public:
  // `count` is in units; for UTF-8 it is in bytes.
  PlistText(const void* start, std::size_t count, PlistEncoding encoding)
      : start_(start), count_(count), encoding_(encoding) {}
  explicit PlistText(std::u16string_view units) : PlistText(units.data(), units.size(), PlistEncoding::utf16) {}

  PlistEncoding encoding() const { return encoding_; }
  const void* start() const { return start_; }
  std::size_t count() const { return count_; }
  std::size_t byteCount() const { return count_ * (encoding_ >= PlistEncoding::utf16BigEndian ? 2 : 1); }
  bool empty() const { return count_ == 0; }

  // Copies the units, or the first `most` of them, or appends them to a string.
  std::u16string utf16() const;
  std::u16string utf16(std::size_t most) const;
  void appendTo(std::u16string& units) const;

  std::uint32_t hash() const;
  bool startsWith(std::u16string_view prefix) const;

  friend bool operator==(const PlistText& a, const PlistText& b);
  friend bool operator==(const PlistText& a, std::u16string_view b) { return a == PlistText(b); }

  // For tables of texts that exist as long as the table: identify a text by its place, without reading it.
  struct PlaceHash {
    std::size_t operator()(const PlistText& text) const {
      return text.empty() ? 0 : std::hash<const void*>()(text.start_);
    }
  };
  struct SamePlace {
    bool operator()(const PlistText& a, const PlistText& b) const { return a.count_ == b.count_ && a.isAt(b); }
  };

 private:
  bool isAt(const PlistText& other) const {
    return count_ == 0 || (start_ == other.start_ && encoding_ == other.encoding_);
  }

  const void* start_;
  std::size_t count_;
  PlistEncoding encoding_;
};

// Returns true if bytes are well-formed UTF-8: no overlong form, no surrogate, nothing above U+10FFFF.
bool isWellFormedUtf8(std::string_view text);

// Returns UTF-8 to show to people: an unpaired surrogate becomes U+FFFD.
std::string utf8(std::u16string_view units);

// Returns the units of UTF-8 text; a malformed sequence becomes U+FFFD.
std::u16string utf16(std::string_view text);
