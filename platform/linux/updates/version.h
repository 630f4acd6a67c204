// Versions, and which of two is the newer one.
#pragma once

#include <compare>
#include <string>
#include <string_view>
#include <vector>

// Compares as the standard comparator of Sparkle 2 (SUStandardVersionComparator) does, so that one feed means the same
// on both systems. Numbers compare by value and words by character. A missing part counts as zero, so 2.0 equals 2.0.0.
// A word makes a version older than a number or nothing in its place, so 1.4.8b is older than 1.4.8. Everything from
// the first dash on is ignored.
class Version {
 public:
  explicit Version(std::string_view text);

  friend std::weak_ordering operator<=>(const Version& left, const Version& right);
  friend bool operator==(const Version& left, const Version& right) { return std::is_eq(left <=> right); }

 private:
  enum class Kind { number, word, period, separator };
  struct Part {
    Kind kind;
    std::string text;  // of a number without leading zeros
  };

  static Kind kindOf(char character);
  static std::weak_ordering compare(const Part& left, const Part& right);
  std::size_t leadingNumbers() const;
  Version filledUpTo(const Version& other) const;

  std::vector<Part> parts_;
};
