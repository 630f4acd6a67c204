// Gregorian calendars, through Foundation.
#pragma once

#include <memory>
#include <string>

#include "platform/calendar.h"

// Uses NSCalendar. `current` reads the system's time zone again in every call; `inTimeZone` takes Foundation's names.
//
// For a gap that is not an hour long or begins at midnight, nextDate may return a later instant than the end of the
// gap, because NSCalendar does.
class FoundationCalendars : public Calendars {
 public:
  std::shared_ptr<const Calendar> current() override;
  std::shared_ptr<const Calendar> inTimeZone(const std::string& name) override;
};
