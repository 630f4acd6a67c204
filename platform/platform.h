// The platform that a program runs on: one of each interface, and the installed one.
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

// What only a program with a main loop has.
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
  const Desktop* desktop = nullptr;  // null in a program that has none, the command-line companion
};

// Installs a platform for as long as it lives, then the one before.
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

// The installed platform; there must be one.
inline const Platform& platform() {
  assert(PlatformScope::installed != nullptr);
  return *PlatformScope::installed;
}

// The installed platform's desktop; there must be one.
inline const Desktop& desktop() {
  assert(platform().desktop != nullptr);
  return *platform().desktop;
}

// The platform of this system without a desktop, made by its native layer; lives as long as the process.
const Platform& nativePlatform();

// The same with the desktop of the user's session, made at the first call. Throws Error if there is no screen.
const Platform& nativeDesktopPlatform();
