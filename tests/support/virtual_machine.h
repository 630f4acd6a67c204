// A machine of the tests' own: one virtual implementation of each interface of the platform, installed for as long as
// the machine lives. Locale and time zone are fixed, standard output is the machine's, and `automatic` is false when
// it starts and when it ends.
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
  EnglishCollation collation;
  VirtualUserInterface userInterface{journal};
  VirtualBundle bundle{journal};
  VirtualProcesses processes{journal};
  VirtualWorkspace workspace{journal, loop, applications};
  VirtualUserDefaults defaults{journal};
  VirtualApplication application{journal};
  VirtualScreen screen{journal};
  VirtualUpdater updater{journal};
  PrintedOutput output{journal};

  // All of it, for a test that replaces one part.
  const Desktop desktopParts{application, loop, workspace, screen, updater};
  const Platform parts{propertyLists, files,  applications, calendars, collation,
                       userInterface, bundle, processes,    defaults,  &desktopParts};

  // Asleep for this long, then awake: nothing has run meanwhile. Observers are told of the wake before all that is
  // overdue, or after it; both happen.
  void sleep(VirtualMainLoop::Duration duration, VirtualMainLoop::Place wakeIsTold = VirtualMainLoop::Place::back);

 private:
  PlatformScope scope_{parts};
};
