// Text that was not written by this program, made fit for a terminal.
#pragma once

#include <string>
#include <string_view>

// UTF-8 for one line on a terminal: every character that a terminal would obey rather than show becomes "\u{1B}", by
// its number. These are the control characters, line breaks among them, and those that change the direction of the text
// around them or end a line. What is not well formed becomes U+FFFD.
std::string harmlessLine(std::u16string_view units);
std::string harmlessLine(std::string_view utf8);

// The same for text of several lines: its line breaks and tabs stay.
std::string harmlessText(std::string_view utf8);
