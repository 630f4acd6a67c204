// The platform that the program runs on: an implementation of each interface, and access to the installed one.
#pragma once

#include <cassert>
#include <memory>

#include "platform/application.h"
#include "platform/bundle.h"
#include "platform/calendar.h"
#include "platform/collation.h"
#include "platform/error.h"
#include "platform/file_system.h"
#include "platform/main_loop.h"
#include "platform/processes.h"
#include "platform/property_lists.h"
#include "platform/running_applications.h"
#include "platform/screen.h"
#include "platform/updater.h"
#include "platform/user_defaults.h"
#include "platform/user_interface.h"
#include "platform/workspace.h"

// The interfaces that only a program with a main loop has.
struct Desktop {
  Application& application;
  MainLoop& mainLoop;
  Workspace& workspace;
  Screen& screen;
  Updater& updater;
};

struct Platform {
  PropertyLists& propertyLists;
  FileSystem& fileSystem;
  RunningApplications& runningApplications;
  Calendars& calendars;
  Collation& collation;
  UserInterface& userInterface;
  Bundle& bundle;
  Processes& processes;
  UserDefaults& userDefaults;
  const Desktop* desktop = nullptr;  // null in the command-line companion
};

// Installs a platform for its own lifetime, and then the previous one again. Keeps a reference to `platform`.
class PlatformScope {
 public:
  explicit PlatformScope(const Platform& platform) : previous_(installed) { installed = &platform; }
  ~PlatformScope() { installed = previous_; }
  PlatformScope(const PlatformScope&) = delete;
  PlatformScope& operator=(const PlatformScope&) = delete;

 private:
  friend const Platform& platform();
  static inline const Platform* installed = nullptr;
  const Platform* previous_;
};

// Returns the installed platform. One must be installed.
inline const Platform& platform() {
  assert(PlatformScope::installed != nullptr);
  return *PlatformScope::installed;
}

// Returns the desktop of the installed platform, which must have one.
inline const Desktop& desktop() {
  assert(platform().desktop != nullptr);
  return *platform().desktop;
}

// Returns this system's platform without a desktop, created by the native layer at the first call. It lives as long as
// the process. Throws Error if a part of the system that it needs is missing.
const Platform& nativePlatform();

// Returns the same platform with the desktop of the user's session. Throws Error if there is no screen.
const Platform& nativeDesktopPlatform();
