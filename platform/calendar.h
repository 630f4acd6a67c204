// Gregorian calendars: local time in a time zone.
#pragma once

#include <chrono>
#include <memory>
#include <optional>
#include <string>

using Instant = std::chrono::system_clock::time_point;

// Day numbers are the Gregorian calendar's weekday component: 1 is Sunday, 7 is Saturday.
struct DateComponents {
  int year = 0;
  int month = 0;  // 1 to 12
  int day = 0;    // 1 to 31
  int hour = 0;   // 0 to 23
  int minute = 0;
  int second = 0;
  int weekday = 0;  // 1 to 7
};

// What a search looks for; a match lies at second 0 of the minute.
struct MatchingTime {
  std::optional<int> weekday;  // absent: any day
  int hour = 0;
  int minute = 0;
};

class Calendar {
 public:
  virtual ~Calendar() = default;

  // The local date and time of an instant.
  virtual DateComponents components(Instant instant) const = 0;

  // The instant of a full local hour, at minute and second 0; only year, month, day and hour are read.
  virtual Instant instant(const DateComponents& components) const = 0;

  // The earliest match strictly after `after`, absent if there is none. Where the time does not exist on a
  // matching day (a gap), the first instant after the gap on that same day; where it occurs twice, the first
  // of the two, and only that one. Absent too for an hour or a minute that no day has.
  virtual std::optional<Instant> nextDate(Instant after, const MatchingTime& matching) const = 0;
};

class Calendars {
 public:
  virtual ~Calendars() = default;

  // The user's calendar, in the system's time zone as it is now.
  virtual std::shared_ptr<const Calendar> current() = 0;

  // The calendar in a time zone of the tz database ("UTC", "America/New_York"). Throws Error for an unknown one.
  virtual std::shared_ptr<const Calendar> inTimeZone(const std::string& name) = 0;
};
