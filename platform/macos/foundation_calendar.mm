#include "platform/macos/foundation_calendar.h"

#include <cerrno>

#include "platform/error.h"
#include "platform/macos/conversions.h"

namespace {

NSDateComponents* componentsOf(const MatchingTime& matching) {
  NSDateComponents* const components = [[NSDateComponents alloc] init];
  if (matching.weekday) components.weekday = *matching.weekday;
  components.hour = matching.hour;
  components.minute = matching.minute;
  return components;
}

class FoundationCalendar : public Calendar {
 public:
  explicit FoundationCalendar(NSTimeZone* zone) { calendar_.timeZone = zone; }

  DateComponents components(Instant instant) const override {
    constexpr NSCalendarUnit units = NSCalendarUnitYear | NSCalendarUnitMonth | NSCalendarUnitDay | NSCalendarUnitHour |
                                     NSCalendarUnitMinute | NSCalendarUnitSecond | NSCalendarUnitWeekday;
    NSDateComponents* const found = [calendar_ components:units fromDate:dateOf(instant)];
    return {static_cast<int>(found.year),   static_cast<int>(found.month),  static_cast<int>(found.day),
            static_cast<int>(found.hour),   static_cast<int>(found.minute), static_cast<int>(found.second),
            static_cast<int>(found.weekday)};
  }

  Instant instant(const DateComponents& components) const override {
    NSDateComponents* const wanted = [[NSDateComponents alloc] init];
    wanted.year = components.year;
    wanted.month = components.month;
    wanted.day = components.day;
    wanted.hour = components.hour;
    return instantOf([calendar_ dateFromComponents:wanted]);
  }

  std::optional<Instant> nextDate(Instant after, const MatchingTime& matching) const override {
    if (matching.hour < 0 || matching.hour > 23 || matching.minute < 0 || matching.minute > 59) return std::nullopt;
    return raisingErrors([&] { return search(dateOf(after), componentsOf(matching)); });
  }

 private:
  std::optional<Instant> search(NSDate* after, NSDateComponents* wanted) const {
    NSDate* match = nextMatch(after, wanted);
    while (match != nil && !isFirstOfItsDay(match, wanted)) match = nextMatch(match, wanted);
    return match != nil ? std::optional(instantOf(match)) : std::nullopt;
  }

  NSDate* nextMatch(NSDate* after, NSDateComponents* wanted) const {
    return [calendar_ nextDateAfterDate:after
                     matchingComponents:wanted
                                options:NSCalendarMatchNextTime | NSCalendarMatchFirst];
  }

  // Between the two occurrences of a repeated local time, NSCalendar finds the second one, which is not a match.
  bool isFirstOfItsDay(NSDate* match, NSDateComponents* wanted) const {
    NSDate* const before = [[calendar_ startOfDayForDate:match] dateByAddingTimeInterval:-1];
    return [nextMatch(before, wanted) compare:match] != NSOrderedAscending;
  }

  NSCalendar* calendar_ = [NSCalendar calendarWithIdentifier:NSCalendarIdentifierGregorian];
};

}  // namespace

std::shared_ptr<const Calendar> FoundationCalendars::current() {
  [NSTimeZone resetSystemTimeZone];
  return std::make_shared<FoundationCalendar>(NSTimeZone.systemTimeZone);
}

std::shared_ptr<const Calendar> FoundationCalendars::inTimeZone(const std::string& name) {
  NSTimeZone* const zone = [NSTimeZone timeZoneWithName:stringOf(name)];
  if (zone == nil)
    throw Error("TimeZone", ENOENT,
                "The time zone “" + name + "” couldn’t be used because the system doesn’t know it.");
  return std::make_shared<FoundationCalendar>(zone);
}
