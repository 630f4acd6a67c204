// When the next scheduled sort is due.
#pragma once

#include <memory>
#include <optional>
#include <vector>

#include "platform/calendar.h"

// The user's calendar in the system's current time zone.
std::shared_ptr<const Calendar> currentCalendar();

// Returns the earliest instant strictly after `after` on one of `days` (1 is Sunday, 7 is Saturday; other numbers are
// ignored) at the local time `hour`:`minute`, or none if no day is chosen. Where a daylight-saving change skips that
// time, the sort is due at the first instant after the gap; where it repeats the time, the first time only.
std::optional<Instant> nextSortDate(Instant after, int hour, int minute, const std::vector<int>& days,
                                    const Calendar& calendar = *currentCalendar());
