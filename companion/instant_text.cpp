#include "companion/instant_text.h"

#include <array>

#include "platform/platform.h"
#include "schedule/next_sort_date.h"

namespace {

std::string padded(int number, std::size_t digits) {
  std::string text = std::to_string(number);
  return text.size() < digits ? std::string(digits - text.size(), '0') + text : text;
}

std::string day(const DateComponents& date) {
  return padded(date.year, 4) + "-" + padded(date.month, 2) + "-" + padded(date.day, 2);
}

std::string minute(const DateComponents& date) { return padded(date.hour, 2) + ":" + padded(date.minute, 2); }

}  // namespace

std::string instantText(Instant instant) {
  constexpr std::array weekdays = {"Sunday", "Monday", "Tuesday", "Wednesday", "Thursday", "Friday", "Saturday"};
  const DateComponents date = currentCalendar()->components(instant);
  return std::string(weekdays.at(static_cast<std::size_t>(date.weekday - 1))) + " " + day(date) + " " + minute(date);
}

std::string preciseInstantText(Instant instant) {
  const DateComponents date = currentCalendar()->components(instant);
  return day(date) + " " + minute(date) + ":" + padded(date.second, 2);
}

std::string universalInstantText(Instant instant) {
  const DateComponents date = platform().calendars.inTimeZone("UTC")->components(instant);
  return day(date) + "T" + minute(date) + ":" + padded(date.second, 2) + "Z";
}
