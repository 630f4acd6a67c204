#include "platform/linux/plist/date_text.h"

#include <array>
#include <cmath>
#include <cstdint>
#include <limits>

namespace {

constexpr std::int64_t secondsADay = 86400;
constexpr std::int64_t maximumYear = std::numeric_limits<std::int32_t>::max();

// Days before each month of a common year. As in the platform's reader, month 13 is the next January and every other
// month out of range adds no days.
constexpr std::array<std::int64_t, 14> daysBeforeMonth = {0,   0,   31,  59,  90,  120, 151,
                                                          181, 212, 243, 273, 304, 334, 365};

bool isLeap(std::int64_t year) { return year % 4 == 0 && (year % 100 != 0 || year % 400 == 0); }

std::int64_t floorDivide(std::int64_t a, std::int64_t b) { return a / b - (a % b < 0 ? 1 : 0); }

// Returns the days from 2001-01-01 to January 1 of a year of the proleptic Gregorian calendar.
std::int64_t daysBeforeYear(std::int64_t year) {
  const std::int64_t past = year - 1;
  constexpr std::int64_t daysBefore2001 = 730485;
  return past * 365 + floorDivide(past, 4) - floorDivide(past, 100) + floorDivide(past, 400) - daysBefore2001;
}

std::int64_t daysBefore(std::int64_t year, std::int64_t month) {
  if (month < 1 || month >= static_cast<std::int64_t>(daysBeforeMonth.size())) return daysBeforeYear(year);
  return daysBeforeYear(year) + daysBeforeMonth[static_cast<std::size_t>(month)] + (month > 2 && isLeap(year) ? 1 : 0);
}

bool isDigit(char character) { return character >= '0' && character <= '9'; }

// Parses numbers and separators from the front of a text.
class Taker {
 public:
  explicit Taker(std::string_view text) : rest_(text) {}

  bool take(char wanted) {
    if (rest_.empty() || rest_.front() != wanted) return false;
    rest_.remove_prefix(1);
    return true;
  }

  std::optional<std::int64_t> year() {
    std::int64_t year = 0;
    while (!rest_.empty() && isDigit(rest_.front())) {
      year = year * 10 + (rest_.front() - '0');
      if (year > maximumYear) return std::nullopt;
      rest_.remove_prefix(1);
    }
    return year;
  }

  std::optional<std::int64_t> twoDigits() {
    if (rest_.size() < 2 || !isDigit(rest_[0]) || !isDigit(rest_[1])) return std::nullopt;
    const std::int64_t number = (rest_[0] - '0') * 10 + (rest_[1] - '0');
    rest_.remove_prefix(2);
    return number;
  }

  std::size_t left() const { return rest_.size(); }

 private:
  std::string_view rest_;
};

std::string padded(std::int64_t number, std::size_t width) {
  const std::string digits = std::to_string(number < 0 ? -number : number);
  const std::string sign = number < 0 ? "-" : "";
  const std::size_t used = digits.size() + sign.size();
  return sign + std::string(used < width ? width - used : 0, '0') + digits;
}

}  // namespace

std::optional<DateText> parseDateText(std::string_view text) {
  Taker taker(text);
  const bool beforeChrist = taker.take('-');
  const auto year = taker.year();
  if (!year) return std::nullopt;
  std::array<std::int64_t, 5> parts{};  // month, day, hour, minute, second
  constexpr std::string_view separators = "--T::";
  for (std::size_t index = 0; index < parts.size(); ++index) {
    if (!taker.take(separators[index])) return std::nullopt;
    const auto number = taker.twoDigits();
    if (!number) return std::nullopt;
    parts[index] = *number;
  }
  if (!taker.take('Z')) return std::nullopt;
  const auto [month, day, hour, minute, second] = parts;
  const std::int64_t days = daysBefore(beforeChrist ? -*year : *year, month) + day - 1;
  const std::int64_t seconds = days * secondsADay + hour * 3600 + minute * 60 + second;
  return DateText{static_cast<double>(seconds), text.size() - taker.left()};
}

std::optional<std::string> dateText(double seconds) {
  // Beyond every year that is accepted below, and small enough for 64-bit arithmetic.
  constexpr double farthest = 366.0 * secondsADay * 2.2e9;
  if (!(std::abs(seconds) < farthest)) return std::nullopt;
  const auto whole = static_cast<std::int64_t>(std::floor(seconds));
  const std::int64_t day = floorDivide(whole, secondsADay);
  const std::int64_t second = whole - day * secondsADay;
  // An estimate from the mean length of a year, wrong by at most one year.
  std::int64_t year = 2001 + static_cast<std::int64_t>(std::floor(static_cast<double>(day) / 365.2425));
  while (daysBeforeYear(year) > day) --year;
  while (daysBeforeYear(year + 1) <= day) ++year;
  if (year > maximumYear || year < -maximumYear) return std::nullopt;
  std::int64_t month = 12;
  while (daysBefore(year, month) > day) --month;
  return padded(year, 4) + "-" + padded(month, 2) + "-" + padded(day - daysBefore(year, month) + 1, 2) + "T" +
         padded(second / 3600, 2) + ":" + padded(second / 60 % 60, 2) + ":" + padded(second % 60, 2) + "Z";
}
