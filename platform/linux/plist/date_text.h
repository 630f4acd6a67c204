// Dates of the XML format: "2024-01-02T03:04:05Z".
#pragma once

#include <optional>
#include <string>
#include <string_view>

struct DateText {
  double seconds;  // since 2001-01-01 UTC
  std::size_t length;
};

// Returns the date at the start of `text` and the length of its characters; absent if there is no date. Months, days
// and times may be out of range and are then carried over, as in the platform's reader: February 30 is a day in March.
std::optional<DateText> parseDateText(std::string_view text);

// Returns the text of an instant, rounded down to whole seconds. Absent if the reader would not accept the year, and
// for NaN.
std::optional<std::string> dateText(double seconds);
