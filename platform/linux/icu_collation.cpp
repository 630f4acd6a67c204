#include "platform/linux/icu_collation.h"

#include <unicode/uchar.h>
#include <unicode/ucol.h>
#include <unicode/ustring.h>
#include <unicode/utf16.h>

#include <algorithm>
#include <cctype>
#include <compare>
#include <cstdint>
#include <cstdlib>
#include <limits>
#include <string_view>
#include <vector>

#include "platform/error.h"

namespace {

constexpr const char* rootLocale = "root";

// ICU counts units with 32 bits; what lies beyond two thousand million of them does not count.
std::int32_t length(std::u16string_view text) {
  return static_cast<std::int32_t>(std::min<std::size_t>(text.size(), std::numeric_limits<std::int32_t>::max()));
}

// Goes through the numbers in a text: its runs of decimal digits, of whatever script.
class LeadingZeros {
 public:
  explicit LeadingZeros(std::u16string_view text) : text_(text.data()), length_(length(text)) {}

  // How many zeros the next number begins with; -1 if there is no other number.
  std::int32_t next() {
    while (position_ < length_) {
      std::int32_t digit = nextDigit();
      if (digit < 0) continue;
      std::int32_t zeros = 0;
      for (; digit == 0; digit = nextDigit()) ++zeros;
      while (digit >= 0) digit = nextDigit();
      return zeros;
    }
    return -1;
  }

 private:
  // The value of the next character, which is consumed; -1 for one that is no digit, and at the end.
  std::int32_t nextDigit() {
    if (position_ >= length_) return -1;
    UChar32 character = 0;
    U16_NEXT(text_, position_, length_, character);
    return u_charDigitValue(character);
  }

  const char16_t* text_;
  std::int32_t length_;
  std::int32_t position_ = 0;
};

// Text without a number where the other still has one comes first, so that this is an order of all texts.
std::strong_ordering compareLeadingZeros(std::u16string_view a, std::u16string_view b) {
  LeadingZeros inA(a);
  LeadingZeros inB(b);
  for (;;) {
    const std::int32_t zerosOfA = inA.next();
    const std::int32_t zerosOfB = inB.next();
    if (zerosOfA != zerosOfB) return zerosOfA <=> zerosOfB;
    if (zerosOfA < 0) return std::strong_ordering::equal;
  }
}

std::strong_ordering compareCodePoints(std::u16string_view a, std::u16string_view b) {
  return u_strCompare(a.data(), length(a), b.data(), length(b), 1) <=> 0;
}

// The character that the unit at `place` is part of; -1 at the end of the text.
UChar32 characterAt(std::u16string_view text, std::size_t place) {
  if (place >= text.size()) return -1;
  UChar32 character = 0;
  U16_GET(text, 0, place, text.size(), character);
  return character;
}

bool isAsciiDigit(UChar32 character) { return character >= '0' && character <= '9'; }

bool isForeignDigit(UChar32 character) {
  constexpr UChar32 first = 0x0660;
  return character >= first && u_isdigit(character) != 0;
}

// Whether the first difference of two texts lies in a number that has other digits than ASCII ones. ICU passes over
// what two texts begin with alike, and then goes back to the start of a number that it landed in. But outside ASCII
// it overlooks digits there (in a tailored order, and beyond the first plane), takes a part of a number for the whole,
// and its answers contradict each other.
bool differWithinForeignNumber(std::u16string_view a, std::u16string_view b) {
  const std::size_t shorter = std::min(a.size(), b.size());
  if (shorter == 0 || a[0] != b[0]) [[likely]]
    return false;  // nothing to pass over
  std::size_t place = 1;
  while (place < shorter && a[place] == b[place]) ++place;
  const UChar32 inA = characterAt(a, place);
  const UChar32 inB = characterAt(b, place);
  if (isForeignDigit(inA) || isForeignDigit(inB)) return true;
  if (!isAsciiDigit(inA) && !isAsciiDigit(inB)) [[likely]]
    return false;
  while (place > 0 && isAsciiDigit(a[place - 1])) --place;
  return place > 0 && isForeignDigit(characterAt(a, place - 1));
}

using SortKey = std::vector<std::uint8_t>;

SortKey sortKey(const UCollator* collator, std::u16string_view text) {
  SortKey key(64 + 4 * text.size());
  const auto write = [&] {
    return ucol_getSortKey(collator, text.data(), length(text), key.data(), static_cast<std::int32_t>(key.size()));
  };
  const auto needed = static_cast<std::size_t>(write());
  const bool fits = needed <= key.size();
  key.resize(needed);
  if (!fits) write();
  return key;
}

// The same order as the collator's own, over the texts from their first character on; far slower.
std::strong_ordering compareSortKeys(const UCollator* collator, std::u16string_view a, std::u16string_view b) {
  return sortKey(collator, a) <=> sortKey(collator, b);
}

std::strong_ordering compareByRules(const UCollator* collator, std::u16string_view a, std::u16string_view b) {
  return ucol_strcoll(collator, a.data(), length(a), b.data(), length(b)) <=> 0;
}

// What the collator does not tell apart.
std::strong_ordering compareUndecided(std::u16string_view a, std::u16string_view b) {
  if (a == b) return std::strong_ordering::equal;
  const auto byZeros = compareLeadingZeros(a, b);
  return std::is_neq(byZeros) ? byZeros : compareCodePoints(a, b);
}

// The first of the variables that say which locale orders text.
std::string_view namedLocale() {
  for (const char* variable : {"LC_ALL", "LC_COLLATE", "LANG"})
    if (const char* value = std::getenv(variable); value != nullptr && *value != '\0') return value;
  return {};
}

// A POSIX locale's rules are those of the C library's bytes, capitals first, which is nobody's order of titles.
bool isPosix(const char* locale) { return std::string_view(locale).find("POSIX") != std::string_view::npos; }

// The rules of a locale; null if there are none of its own, in whatever way ICU says so.
UCollator* openOwn(const std::string& locale) {
  UErrorCode status = U_ZERO_ERROR;
  UCollator* collator = ucol_open(locale.c_str(), &status);
  if (U_FAILURE(status) != 0) return nullptr;
  const char* rules = ucol_getLocaleByType(collator, ULOC_VALID_LOCALE, &status);
  if (rules != nullptr && !isPosix(rules)) return collator;
  ucol_close(collator);
  return nullptr;
}

UCollator* open(const std::string& locale, UErrorCode& status) {
  UCollator* collator = openOwn(locale);
  if (collator == nullptr) collator = ucol_open(rootLocale, &status);
  ucol_setAttribute(collator, UCOL_STRENGTH, UCOL_TERTIARY, &status);
  ucol_setAttribute(collator, UCOL_NUMERIC_COLLATION, UCOL_ON, &status);
  return collator;
}

// A copy that tells only letters apart, for rules by which accents count from the end of a text, as they do in
// Canadian French; else null.
UCollator* openLettersOnly(const UCollator* rules, UErrorCode& status) {
  if (ucol_getAttribute(rules, UCOL_FRENCH_COLLATION, &status) != UCOL_ON) return nullptr;
  UCollator* copy = ucol_clone(rules, &status);
  ucol_setAttribute(copy, UCOL_STRENGTH, UCOL_PRIMARY, &status);
  return copy;
}

}  // namespace

std::string collationLocale() {
  const std::string_view named = namedLocale();
  const std::string name(named.substr(0, named.find_first_of(".@")));
  const bool isLanguage = !name.empty() && name != "C" && name != "POSIX" &&
                          std::all_of(name.begin(), name.end(), [](unsigned char character) {
                            return std::isalnum(character) != 0 || character == '_' || character == '-';
                          });
  return isLanguage ? name : rootLocale;
}

void IcuCollation::Closer::operator()(UCollator* collator) const { ucol_close(collator); }

IcuCollation::IcuCollation(const std::string& locale) {
  UErrorCode status = U_ZERO_ERROR;
  rules_.reset(open(locale, status));
  lettersOnly_.reset(openLettersOnly(rules_.get(), status));
  if (U_FAILURE(status) != 0)
    throw Error("ICU", status,
                std::string("The rules for ordering titles couldn’t be loaded because ICU answered “") +
                    u_errorName(status) + "” (" + locale + ").");
}

// ICU's comparison leaves out what two texts begin with alike, which misleads it in two cases: see
// differWithinForeignNumber, and accents that count from the end, where the texts do not have equally many. In both
// the sort keys decide, which cost several times as much; in the second only between texts of the same letters.
std::strong_ordering IcuCollation::localizedStandardCompare(std::u16string_view a, std::u16string_view b) const {
  const bool isMisled = differWithinForeignNumber(a, b);
  if (!isMisled) {
    const auto order = compareByRules(lettersOnly_ ? lettersOnly_.get() : rules_.get(), a, b);
    if (std::is_neq(order)) return order;
  }
  if (isMisled || lettersOnly_) {
    const auto order = compareSortKeys(rules_.get(), a, b);
    if (std::is_neq(order)) return order;
  }
  return compareUndecided(a, b);
}
