// When the next scheduled sort is due.
#pragma once

#include <memory>
#include <optional>
#include <vector>

#include "platform/calendar.h"

// The user's calendar, in the system's time zone at the moment of the call.
std::shared_ptr<const Calendar> currentCalendar();

// The earliest instant strictly after `after` that falls on one of `days` (1 is Sunday, 7 is Saturday; other
// numbers are ignored) at the local time `hour`:`minute`; absent when no day is chosen. A time that a change of
// the clock skips is due at the first instant after the gap; one that occurs twice is due the first time only.
std::optional<Instant> nextSortDate(Instant after, int hour, int minute, const std::vector<int>& days,
                                    const Calendar& calendar = *currentCalendar());
