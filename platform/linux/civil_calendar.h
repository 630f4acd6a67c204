// Gregorian calendars over the system's time-zone files.
#pragma once

#include <memory>
#include <string>

#include "platform/calendar.h"

// The calendars of this system. TZ is followed as the C library does where it names a zone, with or without a
// colon in front; empty, or naming none, it means UTC. Rules spelled out in TZ itself ("CET-1CEST,M3.5.0,M10.5.0")
// count as no zone's name. Without TZ the zone is that of /etc/localtime. Both are looked at anew in every call.
class CivilCalendars : public Calendars {
 public:
  std::shared_ptr<const Calendar> current() override;
  std::shared_ptr<const Calendar> inTimeZone(const std::string& name) override;
};
