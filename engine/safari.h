// Safari as a running application.
#pragma once

#include <memory>
#include <vector>

#include "platform/running_applications.h"

// Safari is identified by its bundle identifier only.
inline constexpr const char* safariIdentifier = "com.apple.Safari";

// Every running Safari process.
std::vector<std::shared_ptr<RunningApplication>> runningSafaris();

// True if at least one Safari process is running.
bool safariRunning();
