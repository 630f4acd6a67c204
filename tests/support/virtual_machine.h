// A machine of the tests' own: one virtual implementation of each interface of the platform, installed for as long as
// the machine lives. Locale and time zone are fixed, standard output is the machine's, and `automatic` is false when
// it starts and when it ends.
#pragma once

#include "platform/linux/icu_collation.h"
#include "platform/platform.h"
#include "tests/support/journal.h"
#include "tests/support/printed_output.h"
#include "tests/support/virtual_file_system.h"
#include "tests/support/virtual_installation.h"
#include "tests/support/virtual_property_lists.h"
#include "tests/support/virtual_running_applications.h"
#include "tests/support/virtual_user_interface.h"

class VirtualMachine {
 public:
  VirtualMachine();
  ~VirtualMachine();
  VirtualMachine(const VirtualMachine&) = delete;
  VirtualMachine& operator=(const VirtualMachine&) = delete;

  Journal journal;
  VirtualPropertyLists propertyLists{journal};
  VirtualFileSystem files{journal};
  VirtualRunningApplications applications{journal};
  VirtualCalendars calendars;
  IcuCollation collation{"en"};
  VirtualUserInterface userInterface{journal};
  VirtualBundle bundle{journal};
  VirtualProcesses processes{journal};
  PrintedOutput output{journal};

  // All of it, for a test that replaces one part.
  const Platform parts{propertyLists, files, applications, calendars, collation, userInterface, bundle, processes};

 private:
  PlatformScope scope_{parts};
};
