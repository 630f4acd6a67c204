// Safari as a running application.
#pragma once

#include <memory>
#include <vector>

#include "platform/error.h"
#include "platform/running_applications.h"

// Safari is identified by its bundle identifier only.
inline constexpr const char* safariIdentifier = "com.apple.Safari";

// Thrown if the system does not reply whether Safari is running, so that it may be. Has the domain and the code of the
// system's error.
class SafariUnknown : public Error {
  using Error::Error;
};

enum class SafariState {
  closed,
  running,  // at least one process
  unknown
};

SafariState safariState();

// Every running Safari process. Throws SafariUnknown.
std::vector<std::shared_ptr<RunningApplication>> runningSafaris();

// True if at least one Safari process is running. Throws SafariUnknown.
bool safariRunning();

// False if this system has nobody to ask, so that Safari counts as closed without having been looked for. Throws
// SafariUnknown.
bool canLookForSafari();
