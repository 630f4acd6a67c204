#include "platform/linux/icu_collation.h"

#include <unicode/uchar.h>
#include <unicode/ucol.h>
#include <unicode/ustring.h>
#include <unicode/utf16.h>

#include <algorithm>
#include <compare>
#include <cstdint>
#include <limits>
#include <string_view>
#include <vector>

#include "platform/error.h"
#include "platform/linux/icu_start.h"

namespace {

// ICU's lengths have 32 bits, so only the first 2^31 - 1 units of a text count.
std::int32_t length(std::u16string_view text) {
  return static_cast<std::int32_t>(std::min<std::size_t>(text.size(), std::numeric_limits<std::int32_t>::max()));
}

// Iterates over the numbers in a text, which are runs of decimal digits of any script.
class LeadingZeros {
 public:
  explicit LeadingZeros(std::u16string_view text) : text_(text.data()), length_(length(text)) {}

  // Returns the number of leading zeros of the next number; -1 at the end of the text.
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
  // Consumes the next character. Returns its value; -1 if it is not a digit, and at the end of the text.
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

// A text that ends before the other's next number comes first, so that this is a total order.
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

// Returns the character that contains the unit at `place`; -1 at the end of the text.
UChar32 characterAt(std::u16string_view text, std::size_t place) {
  if (place >= text.size()) return -1;
  UChar32 character = 0;
  U16_GET(text, 0, place, text.size(), character);
  return character;
}

bool isAsciiDigit(UChar32 character) { return character >= '0' && character <= '9'; }

bool isOtherDigit(UChar32 character) {
  constexpr UChar32 first = 0x0660;
  return character >= first && u_isdigit(character) != 0;
}

// Returns true if the first difference of two texts is in a number with digits outside ASCII. ICU skips the common
// prefix and then backs up to the start of a number. Outside ASCII it misses digits there (in tailored orders and
// beyond the Basic Multilingual Plane), so it compares only a part of the number, and its results are not transitive.
bool differInNonAsciiNumber(std::u16string_view a, std::u16string_view b) {
  const std::size_t shorter = std::min(a.size(), b.size());
  if (shorter == 0 || a[0] != b[0]) [[likely]]
    return false;  // no common prefix
  std::size_t place = 1;
  while (place < shorter && a[place] == b[place]) ++place;
  const UChar32 inA = characterAt(a, place);
  const UChar32 inB = characterAt(b, place);
  if (isOtherDigit(inA) || isOtherDigit(inB)) return true;
  if (!isAsciiDigit(inA) && !isAsciiDigit(inB)) [[likely]]
    return false;
  while (place > 0 && isAsciiDigit(a[place - 1])) --place;
  return place > 0 && isOtherDigit(characterAt(a, place - 1));
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

// Compares whole texts, without skipping a common prefix as the collator's own comparison does. Far slower.
std::strong_ordering compareSortKeys(const UCollator* collator, std::u16string_view a, std::u16string_view b) {
  return sortKey(collator, a) <=> sortKey(collator, b);
}

std::strong_ordering compareByRules(const UCollator* collator, std::u16string_view a, std::u16string_view b) {
  return ucol_strcoll(collator, a.data(), length(a), b.data(), length(b)) <=> 0;
}

// The longest run of combining marks in Unicode's stream-safe text format.
constexpr int mostMarks = 30;

// Calls `visit` with the end of each character, and with true if a run of combining marks of the greatest length ends
// there, until it returns false.
template <class Visit>
void forEachCharacter(std::u16string_view text, const Visit& visit) {
  int marks = 0;
  for (std::size_t place = 0; place < text.size();) {
    UChar32 character = 0;
    U16_NEXT(text, place, text.size(), character);
    marks = u_getCombiningClass(character) != 0 ? marks + 1 : 0;
    if (!visit(place, marks != 0 && marks % mostMarks == 0)) return;
  }
}

// A shorter text has no run of marks that takes long to put into order.
bool isLong(std::u16string_view text) { return text.size() > std::size_t{2} * mostMarks; }

bool hasManyMarks(std::u16string_view text) {
  bool isFound = false;
  if (!isLong(text)) return isFound;
  forEachCharacter(text, [&](std::size_t, bool endsRun) {
    isFound = endsRun;
    return !isFound;
  });
  return isFound;
}

// Returns a text with a grapheme joiner, which the collator ignores, after each longest run of marks. Otherwise the
// collator would put a run of any length into canonical order, in time quadratic in that length.
std::u16string streamSafe(std::u16string_view text) {
  constexpr char16_t joiner = 0x034F;
  std::u16string safe;
  std::size_t copied = 0;
  forEachCharacter(text, [&](std::size_t end, bool endsRun) {
    safe += text.substr(copied, end - copied);
    copied = end;
    if (endsRun && isLong(text)) safe += joiner;
    return true;
  });
  return safe;
}

// Orders texts that are equal by the collator's rules.
std::strong_ordering compareEquivalent(std::u16string_view a, std::u16string_view b) {
  if (a == b) return std::strong_ordering::equal;
  const auto byZeros = compareLeadingZeros(a, b);
  return std::is_neq(byZeros) ? byZeros : compareCodePoints(a, b);
}

// POSIX locales order by bytes, with capitals first, which no user expects of titles.
bool isPosix(const char* locale) { return std::string_view(locale).find("POSIX") != std::string_view::npos; }

// Returns the rules of a locale. Returns null if ICU has none: it then fails, or falls back to other rules.
UCollator* openOwn(const std::string& locale) {
  UErrorCode status = U_ZERO_ERROR;
  UCollator* collator = ucol_open(locale.c_str(), &status);
  if (U_FAILURE(status) != 0) return nullptr;
  const char* rules = ucol_getLocaleByType(collator, ULOC_VALID_LOCALE, &status);
  if (rules != nullptr && !isPosix(rules)) return collator;
  ucol_close(collator);
  return nullptr;
}

UCollator* openCollator(const std::string& locale, UErrorCode& status) {
  UCollator* collator = openOwn(locale);
  if (collator == nullptr) collator = ucol_open(rootLocale, &status);
  ucol_setAttribute(collator, UCOL_STRENGTH, UCOL_TERTIARY, &status);
  ucol_setAttribute(collator, UCOL_NUMERIC_COLLATION, UCOL_ON, &status);
  return collator;
}

// Returns a copy that compares only letters, if the rules compare accents from the end of a text, as in Canadian
// French; null otherwise.
UCollator* openLettersOnly(const UCollator* rules, UErrorCode& status) {
  if (ucol_getAttribute(rules, UCOL_FRENCH_COLLATION, &status) != UCOL_ON) return nullptr;
  UCollator* copy = ucol_clone(rules, &status);
  ucol_setAttribute(copy, UCOL_STRENGTH, UCOL_PRIMARY, &status);
  return copy;
}

}  // namespace

void IcuCollation::Closer::operator()(UCollator* collator) const { ucol_close(collator); }

IcuCollation::IcuCollation(const std::string& locale) {
  const IcuStart start;
  UErrorCode status = U_ZERO_ERROR;
  rules_.reset(openCollator(locale, status));
  lettersOnly_.reset(openLettersOnly(rules_.get(), status));
  ordersMarks_ = ucol_getAttribute(rules_.get(), UCOL_NORMALIZATION_MODE, &status) == UCOL_ON;
  if (U_FAILURE(status) != 0)
    throw Error(
        "ICU", status,
        std::string("The rules for ordering titles couldn’t be loaded: ") + u_errorName(status) + " (" + locale + ").");
  ranks_.emplace(rules_.get());
}

// ICU's comparison skips the common prefix of two texts, which gives wrong results in two cases: numbers outside ASCII
// (see differInNonAsciiNumber), and accents that compare from the end if one text has more of them. In both cases the
// sort keys decide, which cost several times as much; in the second case only for texts with the same letters.
std::strong_ordering IcuCollation::compareByLocale(std::u16string_view a, std::u16string_view b) const {
  const bool needsSortKeys = differInNonAsciiNumber(a, b);
  if (!needsSortKeys) {
    const auto order = compareByRules(lettersOnly_ ? lettersOnly_.get() : rules_.get(), a, b);
    if (std::is_neq(order)) return order;
  }
  return needsSortKeys || lettersOnly_ ? compareSortKeys(rules_.get(), a, b) : std::strong_ordering::equal;
}

std::strong_ordering IcuCollation::localizedStandardCompare(std::u16string_view a, std::u16string_view b) const {
  if (const auto order = ranks_->compare(a, b); std::is_neq(order)) return order;
  const bool needsBreaks = ordersMarks_ && (hasManyMarks(a) || hasManyMarks(b));
  const auto order = needsBreaks ? compareByLocale(streamSafe(a), streamSafe(b)) : compareByLocale(a, b);
  return std::is_neq(order) ? order : compareEquivalent(a, b);
}
