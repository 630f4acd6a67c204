// The platform of Linux without a desktop.
#include "platform/linux/civil_calendar.h"
#include "platform/linux/collation_locale.h"
#include "platform/linux/event_log.h"
#include "platform/linux/icu_collation.h"
#include "platform/linux/installed_bundle.h"
#include "platform/linux/linux_processes.h"
#include "platform/linux/plist/property_list_codec.h"
#include "platform/linux/posix_file_system.h"
#include "platform/linux/property_list_defaults.h"
#include "platform/linux/session_bus_applications.h"
#include "platform/platform.h"
#include "platform/posix/console_user_interface.h"
#include "platform/posix/standard_streams.h"

const Platform& nativePlatform() {
  prepareStandardStreams();
  logEventsIfAsked();
  static PropertyListCodec propertyLists;
  static PosixFileSystem fileSystem;
  static SessionBusApplications runningApplications;
  static CivilCalendars calendars;
  static PropertyListDefaults userDefaults;
  static IcuCollation collation(collationLocale(userDefaults));
  static ConsoleUserInterface userInterface;
  static InstalledBundle bundle;
  static LinuxProcesses processes;
  static const Platform platform{propertyLists, fileSystem, runningApplications, calendars,   collation,
                                 userInterface, bundle,     processes,           userDefaults};
  return platform;
}
