// Dates and times as text.
#pragma once

#include <string>

#include "platform/calendar.h"

// Returns weekday, date and time in the user's time zone: "Monday 2026-09-28 09:30".
std::string instantText(Instant instant);

// Returns date and time to the second: "2026-09-28 09:30:00".
std::string preciseInstantText(Instant instant);

// Returns date and time in UTC: "2026-09-28T07:30:00Z".
std::string universalInstantText(Instant instant);
