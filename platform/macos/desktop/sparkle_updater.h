// Updates by Sparkle.
#pragma once

#include "platform/updater.h"

// Sparkle's standard controller with its standard windows. The address of its feed and the key of its signatures are in
// the bundle's information.
class SparkleUpdater : public Updater {
 public:
  std::shared_ptr<UpdaterController> start(const std::weak_ptr<UpdaterDelegate>& delegate) override;
};
