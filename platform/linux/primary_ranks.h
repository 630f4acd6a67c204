// A fast path for the order of titles: most differ first in a Latin, Greek or Cyrillic letter, a digit or punctuation.
#pragma once

#include <array>
#include <compare>
#include <cstddef>
#include <cstdint>
#include <string_view>

struct UCollator;

// The order of common characters, as a collator with numeric ordering defines it. Decides between texts whose first
// primary difference is between two of these characters, several times as fast as the collator. Leaves all else to the
// collator: other characters, those that its locale tailors, those that may belong to a contraction, and texts without
// a primary difference.
class PrimaryRanks {
 public:
  // If the data of the collator cannot be read, or would take long to read, leaves everything to the collator.
  explicit PrimaryRanks(const UCollator* collator);

  // Returns the collator's result, or `equal` if the collator has to decide.
  std::strong_ordering compare(std::u16string_view a, std::u16string_view b) const;

 private:
  // A rank and the two flags. The rank is 0 for a character that is left to the collator, and past the end of a text.
  using Entry = std::uint16_t;
  static constexpr Entry startsContraction = 0x8000;
  static constexpr Entry continuesContraction = 0x4000;
  static constexpr Entry rankBits = 0x3FFF;
  static constexpr Entry unknown = startsContraction | continuesContraction;  // may be any part of one
  static constexpr std::size_t count = 0x460;  // the last letter of basic Cyrillic is at 0x45F

  static bool mayContract(Entry before, Entry after);
  // Returns true for a known character that no contraction has, as nearly all are.
  static bool isPlain(Entry entry) { return entry != 0 && entry <= rankBits; }

  bool markTailored(const UCollator* collator);
  void markContraction(std::u16string_view text);
  void rank(const UCollator* primary);

  Entry entryAt(std::u16string_view text, std::size_t place) const;
  bool isKnown(std::u16string_view text, std::size_t place) const { return (entryAt(text, place) & rankBits) != 0; }
  bool standsAlone(std::u16string_view text, std::size_t place) const;
  bool mayFollowDigit(std::u16string_view text, std::size_t place) const;
  std::strong_ordering compareEnd(std::u16string_view longer, std::size_t place) const;
  std::strong_ordering compareDigits(std::u16string_view a, std::u16string_view b, std::size_t place) const;
  std::strong_ordering compareNumbers(std::u16string_view a, std::u16string_view b, std::size_t start) const;

  std::array<Entry, count> entries_{};
};
