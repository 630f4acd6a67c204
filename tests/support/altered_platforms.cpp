#include "tests/support/altered_platforms.h"

#include <chrono>

using namespace std::chrono_literals;

namespace {

class AlteredCalendar : public Calendar {
 public:
  AlteredCalendar(std::shared_ptr<const Calendar> calendar, AlteredCalendars::Search search)
      : calendar_(std::move(calendar)), search_(std::move(search)) {}

  DateComponents components(Instant instant) const override { return calendar_->components(instant); }
  Instant instant(const DateComponents& components) const override { return calendar_->instant(components); }
  std::optional<Instant> nextDate(Instant after, const MatchingTime& matching) const override {
    return search_(*calendar_, after, matching);
  }

 private:
  std::shared_ptr<const Calendar> calendar_;
  AlteredCalendars::Search search_;
};

}  // namespace

std::shared_ptr<const Calendar> AlteredCalendars::current() {
  return std::make_shared<AlteredCalendar>(calendars_.current(), search_);
}

std::shared_ptr<const Calendar> AlteredCalendars::inTimeZone(const std::string& name) {
  return std::make_shared<AlteredCalendar>(calendars_.inTimeZone(name), search_);
}

std::optional<Instant> onOrAfter(const Calendar& calendar, Instant after, MatchingTime matching) {
  return calendar.nextDate(after - Instant::duration(1), matching);
}

std::optional<Instant> withWeekdaysFromZero(const Calendar& calendar, Instant after, MatchingTime matching) {
  if (matching.weekday) *matching.weekday = *matching.weekday % 7 + 1;  // 0 is Sunday, and so is 7
  return calendar.nextDate(after, matching);
}

std::optional<Instant> withoutGaps(const Calendar& calendar, Instant after, MatchingTime matching) {
  const std::optional<Instant> found = calendar.nextDate(after, matching);
  if (!found) return std::nullopt;
  const DateComponents date = calendar.components(*found);
  return date.hour == matching.hour && date.minute == matching.minute ? found : std::nullopt;
}

std::optional<Instant> findingNothing(const Calendar& /*calendar*/, Instant /*after*/, MatchingTime /*matching*/) {
  return std::nullopt;
}

Platform with(Calendars& calendars) {
  const Platform& now = platform();
  return {now.propertyLists, now.fileSystem, now.runningApplications, calendars,        now.collation,
          now.userInterface, now.bundle,     now.processes,           now.userDefaults, now.desktop};
}

Platform with(Collation& collation) {
  const Platform& now = platform();
  return {now.propertyLists, now.fileSystem, now.runningApplications, now.calendars,    collation,
          now.userInterface, now.bundle,     now.processes,           now.userDefaults, now.desktop};
}
