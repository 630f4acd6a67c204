// Local times as text, for comparisons.
#pragma once

#include <string>

#include "platform/calendar.h"

// Returns a local time as "2026-03-08 07:05:09 day 1".
std::string shown(const DateComponents& date);

// Returns the local time of the next match; "none" if there is none.
std::string next(const Calendar& calendar, Instant after, const MatchingTime& matching);
