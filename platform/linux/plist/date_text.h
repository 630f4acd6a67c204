// Dates as the XML format writes them: "2024-01-02T03:04:05Z".
#pragma once

#include <optional>
#include <string>
#include <string_view>

// The seconds since 2001-01-01 UTC that a text at the start of `text` means, and how long that text is; absent if
// there is none. The month, day and time are counted on from the year as the platform's reader counts them, so
// that February 30 is a day in March.
struct DateText {
  double seconds;
  std::size_t length;
};
std::optional<DateText> parseDateText(std::string_view text);

// The text of an instant, cut to whole seconds; absent for one whose year has more digits than the reader takes
// (and for what is no number).
std::optional<std::string> dateText(double seconds);
