// Gregorian calendars: local time in a time zone.
#pragma once

#include <chrono>
#include <memory>
#include <optional>
#include <string>

// A point in time. The system clock's own type may count nanoseconds, which end in the year 2262.
using Instant = std::chrono::sys_time<std::chrono::microseconds>;

// Returns the time of the system's clock.
inline Instant systemTime() { return std::chrono::floor<Instant::duration>(std::chrono::system_clock::now()); }

struct DateComponents {
  int year = 0;
  int month = 0;  // 1 to 12
  int day = 0;    // 1 to 31
  int hour = 0;   // 0 to 23
  int minute = 0;
  int second = 0;
  int weekday = 0;  // 1 is Sunday, 7 is Saturday
};

// A local time to search for. It matches at second 0 of the minute.
struct MatchingTime {
  std::optional<int> weekday;  // 1 is Sunday, 7 is Saturday; absent for any day
  int hour = 0;
  int minute = 0;
};

class Calendar {
 public:
  virtual ~Calendar() = default;

  // Returns the local date and time of an instant.
  virtual DateComponents components(Instant instant) const = 0;

  // Returns the instant at which a local hour begins. Reads only year, month, day and hour.
  virtual Instant instant(const DateComponents& components) const = 0;

  // Returns the earliest match strictly after `after`; absent if there is none, or if the hour or the minute is out of
  // range. If the local time does not exist on a matching day (a gap), the match is the first instant after the gap on
  // that day. If it occurs twice, only the first occurrence is a match.
  virtual std::optional<Instant> nextDate(Instant after, const MatchingTime& matching) const = 0;
};

class Calendars {
 public:
  virtual ~Calendars() = default;

  // Returns a calendar in the time zone that the system has at the moment of the call.
  virtual std::shared_ptr<const Calendar> current() = 0;

  // Returns a calendar in a time zone of the tz database, such as "UTC" or "America/New_York". Throws Error if the
  // system does not know the zone.
  virtual std::shared_ptr<const Calendar> inTimeZone(const std::string& name) = 0;
};
