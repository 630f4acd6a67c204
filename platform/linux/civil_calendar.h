// Gregorian calendars over the system's time-zone files.
#pragma once

#include <memory>
#include <string>

#include "platform/calendar.h"

// The current zone is that of the C library, and so of every other program: TZ has the name of a zone, the path of a
// zone file or rules ("CET-1CEST,M3.5.0,M10.5.0/3"), each with or without a leading colon; if TZ has anything else, the
// zone is UTC; if it is not set, the zone is that of /etc/localtime. Every call reads both again, and the calendars
// that earlier calls returned follow. A zone file that is a pipe or a device counts as UTC.
class CivilCalendars : public Calendars {
 public:
  std::shared_ptr<const Calendar> current() override;
  std::shared_ptr<const Calendar> inTimeZone(const std::string& name) override;
};
