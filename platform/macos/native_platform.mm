// The platform of macOS without a desktop.
#include "platform/macos/appkit_applications.h"
#include "platform/macos/foundation_calendar.h"
#include "platform/macos/foundation_collation.h"
#include "platform/macos/foundation_file_system.h"
#include "platform/macos/foundation_processes.h"
#include "platform/macos/foundation_property_lists.h"
#include "platform/macos/main_bundle.h"
#include "platform/macos/objective_c.h"
#include "platform/macos/standard_defaults.h"
#include "platform/platform.h"
#include "platform/posix/console_user_interface.h"
#include "platform/posix/standard_streams.h"

// Part of the runtime that Clang documents for automatic reference counting.
extern "C" void* objc_autoreleasePoolPush();

const Platform& nativePlatform() {
  prepareStandardStreams();
  // The pool for what is autoreleased outside of the main run loop, which has its own. It lives as long as the process.
  static void* const pool = objc_autoreleasePoolPush();
  static_cast<void>(pool);
  static FoundationPropertyLists propertyLists;
  static FoundationFileSystem fileSystem;
  static AppKitApplications runningApplications;
  static FoundationCalendars calendars;
  static FoundationCollation collation;
  static ConsoleUserInterface userInterface;
  static MainBundle bundle;
  static FoundationProcesses processes;
  static StandardDefaults userDefaults;
  static const Platform platform{propertyLists, fileSystem, runningApplications, calendars,   collation,
                                 userInterface, bundle,     processes,           userDefaults};
  return platform;
}
