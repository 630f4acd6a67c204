// One virtual implementation of each platform interface, installed while the machine lives. Locale and time zone are
// fixed, standard output is captured, and `automatic` is set to false when the machine is created and destroyed.
#pragma once

#include "platform/platform.h"
#include "tests/support/journal.h"
#include "tests/support/native_parts.h"
#include "tests/support/printed_output.h"
#include "tests/support/virtual_application.h"
#include "tests/support/virtual_file_system.h"
#include "tests/support/virtual_installation.h"
#include "tests/support/virtual_main_loop.h"
#include "tests/support/virtual_property_lists.h"
#include "tests/support/virtual_running_applications.h"
#include "tests/support/virtual_screen.h"
#include "tests/support/virtual_user_defaults.h"
#include "tests/support/virtual_user_interface.h"
#include "tests/support/virtual_workspace.h"

class VirtualMachine {
 public:
  VirtualMachine();
  ~VirtualMachine();
  VirtualMachine(const VirtualMachine&) = delete;
  VirtualMachine& operator=(const VirtualMachine&) = delete;

  Journal journal;
  VirtualPropertyLists propertyLists{journal};
  VirtualFileSystem files{journal};
  VirtualMainLoop loop{journal};
  VirtualRunningApplications applications{journal, loop};
  VirtualCalendars calendars;
  Collation& collation = englishCollation();
  VirtualUserInterface userInterface{journal};
  VirtualBundle bundle{journal};
  VirtualProcesses processes{journal, loop};
  VirtualWorkspace workspace{journal, loop, applications};
  VirtualUserDefaults defaults{journal};
  VirtualApplication application{journal};
  VirtualScreen screen{journal};
  VirtualUpdater updater{journal};
  PrintedOutput output{journal};

  // All parts, for a test that replaces one of them.
  const Desktop desktopParts{application, loop, workspace, screen, updater};
  const Platform parts{propertyLists, files,  applications, calendars, collation,
                       userInterface, bundle, processes,    defaults,  &desktopParts};

  // Sleeps for this long without running anything, then queues the wake notification behind all overdue work or in
  // front of it. On real machines both orders occur.
  void sleep(VirtualMainLoop::Duration duration, VirtualMainLoop::Place placeOfWake = VirtualMainLoop::Place::back);

 private:
  // The same for every machine, because it never changes and takes long to make.
  static Collation& englishCollation();

  PlatformScope scope_{parts};
};
