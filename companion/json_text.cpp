#include "companion/json_text.h"

#include "values/plist_text.h"

std::string jsonString(std::u16string_view units) {
  // The detour through UTF-8 replaces unpaired surrogates.
  constexpr std::string_view digits = "0123456789abcdef";
  std::string text = "\"";
  for (const char16_t unit : utf16(utf8(units))) {
    if (unit >= 0x20 && unit < 0x7F) {
      if (unit == u'"' || unit == u'\\') text += '\\';
      text += static_cast<char>(unit);
      continue;
    }
    text += "\\u";
    for (int shift = 12; shift >= 0; shift -= 4) text += digits[(unit >> shift) & 0xF];
  }
  return text + '"';
}

std::string_view jsonTruth(bool value) { return value ? "true" : "false"; }
