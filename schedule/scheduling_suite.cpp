#include "schedule/scheduling_suite.h"

#include <memory>

#include "platform/platform.h"
#include "schedule/next_sort_date.h"
#include "values/require.h"

namespace {

constexpr int wednesday = 4;

}  // namespace

void runSchedulingSuite() {
  runSchedulingSuite({nextSortDate, [](Instant after, const MatchingTime& matching, const Calendar& calendar) {
                        return calendar.nextDate(after, matching);
                      }});
}

void runSchedulingSuite(const SchedulingFunctions& functions) {
  const std::shared_ptr<const Calendar> utc = platform().calendars.inTimeZone("UTC");
  const Instant saturday = utc->instant({.year = 2026, .month = 9, .day = 26, .hour = 8});
  const auto on = [&](const std::vector<int>& days) { return functions.rule(saturday, 9, 30, days, *utc); };
  const auto day = [&](const std::optional<Instant>& date) { return utc->components(required(date)).day; };

  const std::optional<Instant> daily = functions.search(saturday, {std::nullopt, 9, 30}, *utc);
  require(day(daily) == 26);
  require(day(functions.search(*daily, {std::nullopt, 9, 30}, *utc)) == 27);
  require(day(on({2, 3, 4, 5, 6})) == 28);
  require(day(on({1, 7})) == 26);
  require(!on({}).has_value());
  require(utc->components(required(on({wednesday}))).weekday == wednesday);

  const std::shared_ptr<const Calendar> newYork = platform().calendars.inTimeZone("America/New_York");
  const Instant springForward = newYork->instant({.year = 2026, .month = 3, .day = 8, .hour = 0});
  require(functions.rule(springForward, 2, 30, {1}, *newYork).has_value());
}
