#include "values/harmless_text.h"

#include "values/plist_text.h"

namespace {

bool isBetween(char16_t unit, char16_t first, char16_t last) { return first <= unit && unit <= last; }

// Control characters of C0 and C1, line and paragraph separators, and controls of the text's direction.
bool isInterpreted(char16_t unit) {
  return unit < 0x20 || isBetween(unit, 0x7F, 0x9F) || isBetween(unit, 0x2028, 0x202E) ||
         isBetween(unit, 0x2066, 0x2069);
}

std::u16string escaped(char16_t unit) {
  constexpr std::u16string_view digits = u"0123456789ABCDEF";
  std::u16string number;
  for (unsigned rest = unit; rest != 0 || number.size() < 2; rest >>= 4) number.insert(0, 1, digits[rest & 0xF]);
  return u"\\u{" + number + u"}";
}

std::string harmless(std::u16string_view units, std::u16string_view kept) {
  std::u16string shown;
  shown.reserve(units.size());
  for (const char16_t unit : units) {
    if (isInterpreted(unit) && kept.find(unit) == kept.npos)
      shown += escaped(unit);
    else
      shown += unit;
  }
  return utf8(shown);
}

}  // namespace

std::string harmlessLine(std::u16string_view units) { return harmless(units, u""); }

std::string harmlessLine(std::string_view utf8) { return harmless(utf16(utf8), u""); }

std::string harmlessText(std::string_view utf8) { return harmless(utf16(utf8), u"\n\t"); }
