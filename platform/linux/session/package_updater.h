// The updater of a program that the system's package manager updates: the program itself checks nothing.
#pragma once

#include <memory>

#include "platform/updater.h"
#include "platform/user_defaults.h"

class PackageUpdater : public Updater {
 public:
  // The settings must outlive it and its controllers.
  explicit PackageUpdater(UserDefaults& userDefaults) : userDefaults_(userDefaults) {}

  // Returns a controller that can never check and never calls its delegate. It only stores the setting of automatic
  // checks, "SUEnableAutomaticChecks", which is true unless it is the Boolean false.
  std::shared_ptr<UpdaterController> start(const std::weak_ptr<UpdaterDelegate>& delegate) override;

 private:
  UserDefaults& userDefaults_;
};
