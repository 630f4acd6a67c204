#include "schedule/next_sort_date.h"

#include <algorithm>

#include "platform/platform.h"

std::shared_ptr<const Calendar> currentCalendar() { return platform().calendars.current(); }

std::optional<Instant> nextSortDate(Instant after, int hour, int minute, const std::vector<int>& days,
                                    const Calendar& calendar) {
  std::optional<Instant> earliest;
  for (const int day : days) {
    if (day < 1 || day > 7) continue;
    const std::optional<Instant> candidate = calendar.nextDate(after, {day, hour, minute});
    if (candidate && (!earliest || *candidate < *earliest)) earliest = candidate;
  }
  return earliest;
}
