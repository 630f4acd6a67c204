#include "platform/linux/primary_ranks.h"

#include <unicode/uchar.h>
#include <unicode/ucol.h>
#include <unicode/uset.h>

#include <algorithm>
#include <memory>
#include <utility>
#include <vector>

namespace {

using Collator = std::unique_ptr<UCollator, decltype(&ucol_close)>;
using Set = std::unique_ptr<USet, decltype(&uset_close)>;

bool isDigit(char16_t unit) { return unit >= u'0' && unit <= u'9'; }

// Returns true for characters that have one primary weight each in the root collation. Among the letters of Latin-1 and
// beyond, those that decompose have the weight of their base letter; some others have two weights, as "æ" has.
bool isCommon(char16_t unit) {
  if (unit < 0x80) return unit >= 0x20 && unit != 0x7F;
  if (unit < 0x180) return u_isalpha(unit) && u_getIntPropertyValue(unit, UCHAR_DECOMPOSITION_TYPE) == U_DT_CANONICAL;
  const bool isGreek = unit >= 0x386 && unit <= 0x3CE;
  const bool isCyrillic = unit >= 0x400 && unit <= 0x45F;
  return (isGreek || isCyrillic) && u_isalpha(unit);
}

// Reading a long tailoring, as Chinese, Japanese and Korean have, takes longer than an ordinary sort saves.
bool isShort(const UCollator* collator) {
  constexpr std::int32_t longest = 1000;
  std::int32_t length = 0;
  ucol_getRules(collator, &length);
  return length <= longest;
}

std::u16string_view withoutZeros(std::u16string_view digits) {
  return digits.substr(std::min(digits.find_first_not_of(u'0'), digits.size()));
}

std::u16string_view digitsAt(std::u16string_view text, std::size_t start) {
  std::size_t end = start;
  while (end < text.size() && isDigit(text[end])) ++end;
  return text.substr(start, end - start);
}

}  // namespace

PrimaryRanks::PrimaryRanks(const UCollator* collator) {
  UErrorCode status = U_ZERO_ERROR;
  // With any other handling some characters have no weight, depending on those around them.
  if (ucol_getAttribute(collator, UCOL_ALTERNATE_HANDLING, &status) != UCOL_NON_IGNORABLE || !isShort(collator)) return;
  for (std::size_t unit = 0; unit < count; ++unit)
    if (isCommon(static_cast<char16_t>(unit))) entries_[unit] = rankBits;
  const Collator primary(ucol_clone(collator, &status), ucol_close);
  if (U_FAILURE(status) != 0 || !markTailored(collator)) {
    entries_ = {};
    return;
  }
  ucol_setAttribute(primary.get(), UCOL_STRENGTH, UCOL_PRIMARY, &status);
  rank(primary.get());
}

// Leaves tailored characters to the collator, and marks the parts of tailored contractions. Returns false on failure.
bool PrimaryRanks::markTailored(const UCollator* collator) {
  UErrorCode status = U_ZERO_ERROR;
  const Set tailored(ucol_getTailoredSet(collator, &status), uset_close);
  if (U_FAILURE(status) != 0) return false;
  const std::int32_t items = uset_getItemCount(tailored.get());
  for (std::int32_t item = 0; item < items; ++item) {
    constexpr std::int32_t longest = 64;
    std::array<char16_t, longest> text{};
    UChar32 first = 0;
    UChar32 last = 0;
    const std::int32_t length = uset_getItem(tailored.get(), item, &first, &last, text.data(), longest, &status);
    if (U_FAILURE(status) != 0) return false;
    if (length > 0) markContraction({text.data(), static_cast<std::size_t>(length)});
    for (UChar32 unit = first; length == 0 && unit <= last && unit < static_cast<UChar32>(count); ++unit)
      entries_[static_cast<std::size_t>(unit)] = 0;
  }
  // The contractions of the root collation begin with Cyrillic letters, among others. A letter with an accent may form
  // one with the next accent. Neither matters unless an unknown character follows.
  for (std::size_t unit = 0x80; unit < count; ++unit) entries_[unit] |= startsContraction;
  return true;
}

void PrimaryRanks::markContraction(std::u16string_view text) {
  for (std::size_t place = 0; place < text.size(); ++place)
    if (text[place] < count) entries_[text[place]] |= place == 0 ? startsContraction : continuesContraction;
}

// Replaces the rank of each common character by its place in the order of primary weights. Digits have equal ranks:
// their numbers are compared first.
void PrimaryRanks::rank(const UCollator* primary) {
  constexpr std::size_t longest = 5;  // a weight of at most four bytes, and a zero
  using Key = std::array<std::uint8_t, longest>;
  std::vector<std::pair<Key, char16_t>> keys;
  for (std::size_t unit = 0; unit < count; ++unit) {
    if ((entries_[unit] & rankBits) == 0) continue;
    entries_[unit] &= static_cast<Entry>(~rankBits);
    const char16_t text = isDigit(static_cast<char16_t>(unit)) ? u'0' : static_cast<char16_t>(unit);
    Key key{};
    const std::int32_t length = ucol_getSortKey(primary, &text, 1, key.data(), longest);
    if (length > 1 && length <= static_cast<std::int32_t>(longest)) keys.emplace_back(key, static_cast<char16_t>(unit));
  }
  std::sort(keys.begin(), keys.end());
  Entry rank = 0;
  for (std::size_t place = 0; place < keys.size(); ++place) {
    if (place == 0 || keys[place].first != keys[place - 1].first) ++rank;
    entries_[keys[place].second] |= rank;
  }
  for (Entry& entry : entries_)
    if ((entry & rankBits) == 0) entry = unknown;
}

PrimaryRanks::Entry PrimaryRanks::entryAt(std::u16string_view text, std::size_t place) const {
  if (place >= text.size()) return 0;
  return text[place] < count ? entries_[text[place]] : unknown;
}

bool PrimaryRanks::mayContract(Entry before, Entry after) {
  return (before & (startsContraction | continuesContraction)) != 0 && (after & continuesContraction) != 0;
}

// Returns true if the character at a place has the same weight there as it has alone.
bool PrimaryRanks::standsAlone(std::u16string_view text, std::size_t place) const {
  const Entry entry = entryAt(text, place);
  if ((entry & rankBits) == 0 || mayContract(entry, entryAt(text, place + 1))) return false;
  return place == 0 || !mayContract(entryAt(text, place - 1), entry);
}

// Unknown characters include the digits of other scripts.
bool PrimaryRanks::mayFollowDigit(std::u16string_view text, std::size_t place) const {
  return place > 0 && (isDigit(text[place - 1]) || !isKnown(text, place - 1));
}

std::strong_ordering PrimaryRanks::compare(std::u16string_view a, std::u16string_view b) const {
  const std::size_t shorter = std::min(a.size(), b.size());
  std::size_t place = 0;
  while (place < shorter && a[place] == b[place]) ++place;
  for (; place < shorter; ++place) {
    const Entry entryOfA = entryAt(a, place);
    const Entry entryOfB = entryAt(b, place);
    if (!isPlain(entryOfA) && !standsAlone(a, place)) return std::strong_ordering::equal;
    if (!isPlain(entryOfB) && !standsAlone(b, place)) return std::strong_ordering::equal;
    if (isDigit(a[place]) || isDigit(b[place])) return compareDigits(a, b, place);
    const int rankOfA = entryOfA & rankBits;
    const int rankOfB = entryOfB & rankBits;
    if (rankOfA != rankOfB) return rankOfA <=> rankOfB;
  }
  if (a.size() == b.size()) return std::strong_ordering::equal;
  if (a.size() > b.size()) return compareEnd(a, place);
  return std::is_gt(compareEnd(b, place)) ? std::strong_ordering::less : std::strong_ordering::equal;
}

// Compares a text with one that ends at `place` and has the same weights before it.
std::strong_ordering PrimaryRanks::compareEnd(std::u16string_view longer, std::size_t place) const {
  const bool continuesNumber = isDigit(longer[place]) && mayFollowDigit(longer, place);
  return standsAlone(longer, place) && !continuesNumber ? std::strong_ordering::greater : std::strong_ordering::equal;
}

// Compares texts with the same weights before `place`, at least one of which has a digit there.
std::strong_ordering PrimaryRanks::compareDigits(std::u16string_view a, std::u16string_view b,
                                                 std::size_t place) const {
  std::size_t start = place;
  while (start > 0 && isDigit(a[start - 1])) --start;
  if (mayFollowDigit(a, start)) return std::strong_ordering::equal;
  if (start < place || (isDigit(a[place]) && isDigit(b[place]))) return compareNumbers(a, b, start);
  return (entryAt(a, place) & rankBits) <=> (entryAt(b, place) & rankBits);
}

std::strong_ordering PrimaryRanks::compareNumbers(std::u16string_view a, std::u16string_view b,
                                                  std::size_t start) const {
  constexpr std::size_t longest = 254;  // the collator splits longer numbers
  const std::u16string_view digitsOfA = digitsAt(a, start);
  const std::u16string_view digitsOfB = digitsAt(b, start);
  const auto ends = [&](std::u16string_view text, std::size_t end) { return end == text.size() || isKnown(text, end); };
  if (!ends(a, start + digitsOfA.size()) || !ends(b, start + digitsOfB.size())) return std::strong_ordering::equal;
  const std::u16string_view numberA = withoutZeros(digitsOfA);
  const std::u16string_view numberB = withoutZeros(digitsOfB);
  if (numberA.size() > longest || numberB.size() > longest) return std::strong_ordering::equal;
  return numberA.size() != numberB.size() ? numberA.size() <=> numberB.size() : numberA.compare(numberB) <=> 0;
}
