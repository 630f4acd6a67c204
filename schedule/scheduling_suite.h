// The scheduling suite of the self-test: the next-sort-date rule on fixed calendars and instants.
#pragma once

#include <functional>
#include <optional>
#include <vector>

#include "platform/calendar.h"

// The functions that the suite checks: the rule, and the calendar search that the rule makes for one day.
struct SchedulingFunctions {
  std::function<std::optional<Instant>(Instant after, int hour, int minute, const std::vector<int>& days,
                                       const Calendar& calendar)>
      rule;
  std::function<std::optional<Instant>(Instant after, const MatchingTime& matching, const Calendar& calendar)> search;
};

// Checks the program's own functions, or the given ones. A check that fails ends the process by a signal and prints
// nothing.
void runSchedulingSuite();
void runSchedulingSuite(const SchedulingFunctions& functions);
