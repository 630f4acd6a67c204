// Dates and times for people.
#pragma once

#include <string>

#include "platform/calendar.h"

// Weekday, day and time of an instant in the user's time zone: "Monday 2026-09-28 09:30".
std::string instantText(Instant instant);

// Day and time, to the second: "2026-09-28 09:30:00".
std::string preciseInstantText(Instant instant);
