// Which item of a feed is the update for this program.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "platform/linux/updates/appcast.h"
#include "platform/linux/updates/running_system.h"

struct UpdateChoice {
  std::optional<AppcastItem> item;        // absent if there is no newer version that can be installed here
  std::optional<AppcastItem> unsuitable;  // if there is none, the newest one that the system is too old or not made for
};

// What the items are measured by.
struct UpdateWish {
  std::string ownVersion;
  RunningSystem system;
  std::optional<std::string> skipped;  // the user has skipped this version
};

// Returns the newest item that is for Linux and this processor, is newer than this program, was not skipped, and for
// which the system is new enough. A minimum system is a version of Debian; for a system that is only like Debian, its
// package manager decides.
UpdateChoice choose(const std::vector<AppcastItem>& items, const UpdateWish& wish);
