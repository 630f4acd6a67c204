// Makes text from outside this program safe to print on a terminal.
#pragma once

#include <string>
#include <string_view>

// Returns UTF-8 for one line of a terminal. Each character that a terminal interprets instead of showing becomes an
// escape such as "\u{1B}": control characters, line and paragraph separators, the characters that change the direction
// of the text around them, and invisible tags and annotations. Malformed text becomes U+FFFD.
std::string harmlessLine(std::u16string_view units);
std::string harmlessLine(std::string_view utf8);

// Does the same for text of several lines, but keeps line feeds and tabs.
std::string harmlessText(std::string_view utf8);
