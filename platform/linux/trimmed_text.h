// Text without the space around it.
#pragma once

#include <string_view>

// Returns a part of `text`: without spaces, tabs and line breaks at its ends.
inline std::string_view trimmed(std::string_view text) {
  constexpr std::string_view blanks = " \t\r\n";
  const std::size_t first = text.find_first_not_of(blanks);
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(blanks) - first + 1);
}
