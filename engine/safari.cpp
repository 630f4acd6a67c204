#include "engine/safari.h"

#include "platform/platform.h"

std::vector<std::shared_ptr<RunningApplication>> runningSafaris() {
  return platform().runningApplications.withBundleIdentifier(safariIdentifier);
}

bool safariRunning() { return !runningSafaris().empty(); }
