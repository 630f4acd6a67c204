// What a virtual machine knows about itself: where the program is installed, which time zone it is in, and the next
// random numbers.
#pragma once

#include <memory>
#include <string>

#include "platform/bundle.h"
#include "platform/linux/civil_calendar.h"
#include "platform/processes.h"
#include "tests/support/journal.h"

// Noted as "bundle path".
class VirtualBundle : public Bundle {
 public:
  explicit VirtualBundle(Journal& journal) : journal_(journal) {}

  std::string path() override;
  void moveTo(const std::string& path) { path_ = path; }

 private:
  Journal& journal_;
  std::string path_ = "/Applications/Quillery.app";
};

// Noted as "uuid". They are the same ones on every machine, counted up.
class VirtualProcesses : public Processes {
 public:
  explicit VirtualProcesses(Journal& journal) : journal_(journal) {}

  std::string randomUuid() override;
  // The `number`-th of them, from 1.
  static std::string uuid(int number);

 private:
  Journal& journal_;
  int given_ = 0;
};

// Every calendar there is, with a current time zone of its own, whatever the system's.
class VirtualCalendars : public Calendars {
 public:
  std::shared_ptr<const Calendar> current() override { return inTimeZone(zone_); }
  std::shared_ptr<const Calendar> inTimeZone(const std::string& name) override { return calendars_.inTimeZone(name); }
  void moveTo(const std::string& zone) { zone_ = zone; }

 private:
  CivilCalendars calendars_;
  std::string zone_ = "UTC";
};
