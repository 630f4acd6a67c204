// Updates where the system's package manager brings them: the program itself has nothing to check.
#pragma once

#include <memory>

#include "platform/updater.h"
#include "platform/user_defaults.h"

class PackageUpdater : public Updater {
 public:
  // The settings must outlive it and every controller.
  explicit PackageUpdater(UserDefaults& userDefaults) : userDefaults_(userDefaults) {}

  // A controller that never can check, and tells its delegate nothing. Whether it checks automatically is no more than
  // a setting that is kept: "SUEnableAutomaticChecks", which is true unless it is a Boolean that is false.
  std::shared_ptr<UpdaterController> start(const std::weak_ptr<UpdaterDelegate>& delegate) override;

 private:
  UserDefaults& userDefaults_;
};
