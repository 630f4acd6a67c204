#include "platform/linux/civil_calendar.h"

#include <absl/time/civil_time.h>
#include <absl/time/time.h>

#include <cerrno>
#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <system_error>

#include "platform/error.h"

namespace {

// Days 0 to 14. The time on today's weekday may have passed, which leads to day 7. A zone that moved across the date
// line skipped a whole day, and a gap at the end of a day can skip the hour, which leads to day 14.
constexpr int daysSearched = 15;

constexpr const char* systemZone = "/etc/localtime";
constexpr const char* zoneFolder = "/usr/share/zoneinfo";

int weekdayNumber(absl::CivilDay day) {
  return (static_cast<int>(absl::GetWeekday(day)) + 1) % 7 + 1;  // in Abseil 0 is Monday
}

absl::Time timeOf(Instant instant) { return absl::FromUnixMicros(instant.time_since_epoch().count()); }

Instant instantOf(absl::Time time) { return Instant(std::chrono::microseconds(absl::ToUnixMicros(time))); }

// The search for dates, over the local time of a zone.
class CivilCalendar : public Calendar {
 public:
  DateComponents components(Instant instant) const override {
    const absl::CivilSecond local = localTime(timeOf(instant));
    return {
        static_cast<int>(local.year()),      local.month(), local.day(), local.hour(), local.minute(), local.second(),
        weekdayNumber(absl::CivilDay(local))};
  }

  Instant instant(const DateComponents& components) const override {
    return instantOf(firstInstant(absl::CivilHour(components.year, components.month, components.day, components.hour)));
  }

  std::optional<Instant> nextDate(Instant after, const MatchingTime& matching) const override {
    const absl::Time start = timeOf(after);
    const absl::CivilDay today(localTime(start));
    for (absl::CivilDay day = today; day < today + daysSearched; ++day) {
      if (matching.weekday && weekdayNumber(day) != *matching.weekday) continue;
      const std::optional<absl::Time> match = onDay(day, matching.hour, matching.minute);
      if (match && *match > start) return instantOf(*match);
    }
    return std::nullopt;
  }

 protected:
  virtual absl::CivilSecond localTime(absl::Time time) const = 0;

  // Returns the instant of a local time: the first of two if it is repeated, the end of the gap if it is skipped.
  virtual absl::Time firstInstant(absl::CivilSecond local) const = 0;

 private:
  // Returns the instant of a time of day, or the end of the gap that it is in; absent if that is on another day.
  std::optional<absl::Time> onDay(absl::CivilDay day, int hour, int minute) const {
    if (hour < 0 || hour > 23 || minute < 0 || minute > 59) return std::nullopt;
    const absl::CivilSecond local = absl::CivilMinute(absl::CivilHour(day) + hour) + minute;
    const absl::Time found = firstInstant(local);
    const bool isSameDay = absl::CivilDay(localTime(found)) == day;
    return isSameDay ? std::optional(found) : std::nullopt;
  }
};

// A zone of the tz database.
class NamedZoneCalendar : public CivilCalendar {
 public:
  explicit NamedZoneCalendar(absl::TimeZone zone) : zone_(zone) {}

 protected:
  absl::CivilSecond localTime(absl::Time time) const override { return zone_.At(time).cs; }

  absl::Time firstInstant(absl::CivilSecond local) const override {
    const absl::TimeZone::TimeInfo info = zone_.At(local);
    return info.kind == absl::TimeZone::TimeInfo::SKIPPED ? info.trans : info.pre;
  }

 private:
  absl::TimeZone zone_;
};

// The zone that the C library uses at the moment.
class SystemCalendar : public CivilCalendar {
 protected:
  absl::CivilSecond localTime(absl::Time time) const override {
    return absl::CivilSecond(1970, 1, 1) + absl::ToUnixSeconds(time) + offset(absl::ToUnixSeconds(time));
  }

  absl::Time firstInstant(absl::CivilSecond local) const override {
    const std::int64_t asUtc = local - absl::CivilSecond(1970, 1, 1);
    const std::int64_t offsetBefore = offset(asUtc - furthestChange);
    const std::int64_t offsetAfter = offset(asUtc + furthestChange);
    for (const std::int64_t offsetThen : {offsetBefore, offsetAfter})
      if (offset(asUtc - offsetThen) == offsetThen) return absl::FromUnixSeconds(asUtc - offsetThen);
    return absl::FromUnixSeconds(changeBetween(asUtc - offsetAfter, asUtc - offsetBefore));
  }

 private:
  // In seconds. The largest difference between local time and UTC is less than 25 hours.
  static constexpr std::int64_t furthestChange = std::int64_t{25} * 60 * 60;

  // Returns the difference between local time and UTC, in seconds.
  static std::int64_t offset(std::int64_t instant) {
    const auto time = static_cast<std::time_t>(instant);
    std::tm local{};
    return localtime_r(&time, &local) != nullptr ? local.tm_gmtoff : 0;
  }

  // Returns the first instant after `before` with the same difference as `after`.
  static std::int64_t changeBetween(std::int64_t before, std::int64_t after) {
    const std::int64_t differenceAfter = offset(after);
    while (after - before > 1) {
      const std::int64_t middle = before + (after - before) / 2;
      (offset(middle) == differenceAfter ? after : before) = middle;
    }
    return after;
  }
};

// Returns the path of the file that the C library would read for the current zone. The file may not exist.
std::filesystem::path currentZoneFile() {
  const char* variable = std::getenv("TZ");
  if (variable == nullptr) return systemZone;
  const char* folder = std::getenv("TZDIR");
  return std::filesystem::path(folder != nullptr ? folder : zoneFolder) / (*variable == ':' ? variable + 1 : variable);
}

// Returns true if the C library could wait for data in place of a zone file, such as that of a pipe.
bool wouldWaitForZone() {
  std::error_code ignored;
  const auto type = std::filesystem::status(currentZoneFile(), ignored).type();
  return type == std::filesystem::file_type::fifo || type == std::filesystem::file_type::character;
}

}  // namespace

std::shared_ptr<const Calendar> CivilCalendars::current() {
  if (wouldWaitForZone()) return std::make_shared<NamedZoneCalendar>(absl::UTCTimeZone());
  tzset();
  return std::make_shared<SystemCalendar>();
}

std::shared_ptr<const Calendar> CivilCalendars::inTimeZone(const std::string& name) {
  absl::TimeZone zone;
  if (!absl::LoadTimeZone(name, &zone))
    throw Error("TimeZone", ENOENT,
                "The time zone “" + name + "” couldn’t be used because the system doesn’t know it.");
  return std::make_shared<NamedZoneCalendar>(zone);
}
