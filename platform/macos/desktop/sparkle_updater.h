// Updates, through Sparkle.
#pragma once

#include "platform/updater.h"

// Uses Sparkle's standard controller with its standard windows. The feed's address and the public key for its
// signatures are in the bundle's Info.plist.
class SparkleUpdater : public Updater {
 public:
  std::shared_ptr<UpdaterController> start(const std::weak_ptr<UpdaterDelegate>& delegate) override;
};
