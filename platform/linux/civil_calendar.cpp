#include "platform/linux/civil_calendar.h"

#include <absl/time/civil_time.h>
#include <absl/time/time.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <string_view>
#include <system_error>

#include "platform/error.h"

namespace {

// Days 0 to 14. The time on today's weekday may have passed, which leads to day 7. A zone that moved across the date
// line skipped a whole day, and a gap at the end of a day can skip the hour, which leads to day 14.
constexpr int daysSearched = 15;

constexpr const char* systemZone = "/etc/localtime";
constexpr std::string_view zoneFolder = "/zoneinfo/";

int weekdayNumber(absl::CivilDay day) {
  return (static_cast<int>(absl::GetWeekday(day)) + 1) % 7 + 1;  // in Abseil 0 is Monday
}

Instant instantOf(absl::Time time) { return absl::ToChronoTime(time); }

class CivilCalendar : public Calendar {
 public:
  explicit CivilCalendar(absl::TimeZone zone) : zone_(zone) {}

  DateComponents components(Instant instant) const override {
    const absl::CivilSecond local = zone_.At(absl::FromChrono(instant)).cs;
    return {
        static_cast<int>(local.year()),      local.month(), local.day(), local.hour(), local.minute(), local.second(),
        weekdayNumber(absl::CivilDay(local))};
  }

  Instant instant(const DateComponents& components) const override {
    return instantOf(firstInstant(absl::CivilHour(components.year, components.month, components.day, components.hour)));
  }

  std::optional<Instant> nextDate(Instant after, const MatchingTime& matching) const override {
    const absl::Time start = absl::FromChrono(after);
    const absl::CivilDay today(zone_.At(start).cs);
    for (absl::CivilDay day = today; day < today + daysSearched; ++day) {
      if (matching.weekday && weekdayNumber(day) != *matching.weekday) continue;
      const std::optional<absl::Time> match = onDay(day, matching.hour, matching.minute);
      if (match && *match > start) return instantOf(*match);
    }
    return std::nullopt;
  }

 private:
  // Returns the instant of a local time: the first of two if it is repeated, the end of the gap if it is skipped.
  absl::Time firstInstant(absl::CivilSecond local) const {
    const absl::TimeZone::TimeInfo info = zone_.At(local);
    return info.kind == absl::TimeZone::TimeInfo::SKIPPED ? info.trans : info.pre;
  }

  // Returns the instant of a time of day, or the end of the gap that it is in; absent if that is on another day.
  std::optional<absl::Time> onDay(absl::CivilDay day, int hour, int minute) const {
    if (hour < 0 || hour > 23 || minute < 0 || minute > 59) return std::nullopt;
    const absl::CivilSecond local = absl::CivilMinute(absl::CivilHour(day) + hour) + minute;
    const absl::Time found = firstInstant(local);
    const bool isSameDay = absl::CivilDay(zone_.At(found).cs) == day;
    return isSameDay ? std::optional(found) : std::nullopt;
  }

  absl::TimeZone zone_;
};

std::shared_ptr<const Calendar> calendarIn(absl::TimeZone zone) { return std::make_shared<CivilCalendar>(zone); }

// Returns a path of the system's zone file. Abseil caches zones by name for the life of the process, so each version of
// the file gets another spelling of the path, with one more leading slash.
std::string systemZonePath() {
  static std::string path = systemZone;
  static struct timespec seen {};
  struct stat status {};
  const bool exists = stat(systemZone, &status) == 0;
  const struct timespec now = exists ? status.st_ctim : timespec{};
  if (now.tv_sec != seen.tv_sec || now.tv_nsec != seen.tv_nsec) path.insert(path.begin(), '/');
  seen = now;
  return path;
}

// Returns the zone's name from the target of the symbolic link; the path of the zone file if it is no such link.
std::string systemZoneName() {
  std::error_code noLink;
  const std::string target = std::filesystem::read_symlink(systemZone, noLink).string();
  const std::size_t place = target.rfind(zoneFolder);
  return noLink || place == std::string::npos ? systemZonePath() : target.substr(place + zoneFolder.size());
}

std::string currentZoneName() {
  const char* variable = std::getenv("TZ");
  if (variable == nullptr) return systemZoneName();
  return *variable == ':' ? variable + 1 : variable;
}

}  // namespace

std::shared_ptr<const Calendar> CivilCalendars::current() {
  absl::TimeZone zone;  // UTC
  absl::LoadTimeZone(currentZoneName(), &zone);
  return calendarIn(zone);
}

std::shared_ptr<const Calendar> CivilCalendars::inTimeZone(const std::string& name) {
  absl::TimeZone zone;
  if (!absl::LoadTimeZone(name, &zone))
    throw Error("TimeZone", ENOENT,
                "The time zone “" + name + "” couldn’t be used because the system doesn’t know it.");
  return calendarIn(zone);
}
