// What an updater works with.
#pragma once

#include <functional>
#include <string>

#include "platform/linux/updates/network.h"
#include "platform/linux/updates/packages.h"
#include "platform/linux/updates/running_system.h"
#include "platform/linux/updates/update_source.h"
#include "platform/linux/updates/update_windows.h"
#include "platform/main_loop.h"
#include "platform/user_defaults.h"

// The objects must outlive the updater and its controllers.
struct UpdateTools {
  MainLoop& loop;
  UserDefaults& userDefaults;
  Network& network;
  UpdateWindows& windows;
  Packages& packages;
  UpdateSource source;
  RunningSystem system;
  std::string ownVersion;
  std::string downloadFolder;  // for the folders of downloads; need not exist

  // Ends the program and starts what is installed in its place. Returns false if the program cannot end now.
  std::function<bool()> relaunch;
};
