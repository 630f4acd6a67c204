#include "tests/support/calendar_text.h"

#include <iomanip>
#include <sstream>

std::string shown(const DateComponents& date) {
  std::ostringstream text;
  text << std::setfill('0') << std::setw(4) << date.year << '-' << std::setw(2) << date.month << '-' << std::setw(2)
       << date.day << ' ' << std::setw(2) << date.hour << ':' << std::setw(2) << date.minute << ':' << std::setw(2)
       << date.second << " day " << date.weekday;
  return text.str();
}

std::string next(const Calendar& calendar, Instant after, const MatchingTime& matching) {
  const auto found = calendar.nextDate(after, matching);
  return found ? shown(calendar.components(*found)) : "none";
}
