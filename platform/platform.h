// The platform that the program runs on: one of each interface, and the installed one.
#pragma once

#include <cassert>
#include <memory>

#include "platform/bundle.h"
#include "platform/calendar.h"
#include "platform/collation.h"
#include "platform/error.h"
#include "platform/file_system.h"
#include "platform/processes.h"
#include "platform/property_lists.h"
#include "platform/running_applications.h"
#include "platform/user_interface.h"

struct Platform {
  PropertyLists& propertyLists;
  FileSystem& fileSystem;
  RunningApplications& runningApplications;
  Calendars& calendars;
  Collation& collation;
  UserInterface& userInterface;
  Bundle& bundle;
  Processes& processes;
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

// The platform of this system, made by its native layer; lives as long as the process.
const Platform& nativePlatform();
