// Gregorian calendars by Foundation.
#pragma once

#include <memory>
#include <string>

#include "platform/calendar.h"

// NSCalendar in the system's time zone, which is looked up anew in every call, or in one of Foundation's names.
//
// Where a gap is not an hour long, or begins at midnight, Foundation may find a later time than its end; so may this.
class FoundationCalendars : public Calendars {
 public:
  std::shared_ptr<const Calendar> current() override;
  std::shared_ptr<const Calendar> inTimeZone(const std::string& name) override;
};
