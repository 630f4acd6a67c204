// Gregorian calendars over the system's time-zone files.
#pragma once

#include <memory>
#include <string>

#include "platform/calendar.h"

// The current zone is the one that TZ names, with or without a leading colon. If TZ is empty or does not name a zone,
// it is UTC; POSIX rules in TZ ("CET-1CEST,M3.5.0,M10.5.0") do not name a zone. If TZ is not set, the current zone is
// that of /etc/localtime. Every call reads both again.
class CivilCalendars : public Calendars {
 public:
  std::shared_ptr<const Calendar> current() override;
  std::shared_ptr<const Calendar> inTimeZone(const std::string& name) override;
};
