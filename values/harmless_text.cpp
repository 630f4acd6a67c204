#include "values/harmless_text.h"

#include "values/plist_text.h"

namespace {

bool isBetween(char32_t character, char32_t first, char32_t last) { return first <= character && character <= last; }

// Control characters of C0 and C1, line and paragraph separators, and controls of the text's direction; then characters
// that are invisible and hide other text: interlinear annotations and tags.
bool isInterpreted(char32_t character) {
  return character < 0x20 || isBetween(character, 0x7F, 0x9F) || isBetween(character, 0x2028, 0x202E) ||
         isBetween(character, 0x2066, 0x2069) || character == 0x061C || isBetween(character, 0x200E, 0x200F) ||
         isBetween(character, 0xFFF9, 0xFFFB) || isBetween(character, 0xE0000, 0xE007F);
}

// Returns the character that begins at a place; half of a pair stands for itself.
char32_t characterAt(std::u16string_view units, std::size_t place) {
  const char32_t first = units[place];
  const char32_t second = place + 1 < units.size() ? units[place + 1] : 0;
  const bool isPair = isBetween(first, 0xD800, 0xDBFF) && isBetween(second, 0xDC00, 0xDFFF);
  return isPair ? 0x10000 + ((first - 0xD800) << 10) + (second - 0xDC00) : first;
}

std::u16string escaped(char32_t character) {
  constexpr std::u16string_view digits = u"0123456789ABCDEF";
  std::u16string number;
  for (char32_t rest = character; rest != 0 || number.size() < 2; rest >>= 4) number.insert(0, 1, digits[rest & 0xF]);
  return u"\\u{" + number + u"}";
}

std::string harmless(std::u16string_view units, std::u16string_view kept) {
  std::u16string shown;
  shown.reserve(units.size());
  for (std::size_t place = 0; place < units.size(); ++place) {
    const char32_t character = characterAt(units, place);
    if (!isInterpreted(character) || kept.find(units[place]) != kept.npos) {
      shown += units[place];
    } else {
      shown += escaped(character);
      if (character > 0xFFFF) ++place;
    }
  }
  return utf8(shown);
}

}  // namespace

std::string harmlessLine(std::u16string_view units) { return harmless(units, u""); }

std::string harmlessLine(std::string_view utf8) { return harmless(utf16(utf8), u""); }

std::string harmlessText(std::string_view utf8) { return harmless(utf16(utf8), u"\n\t"); }
