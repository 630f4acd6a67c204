// The system that the program runs on, as far as it decides which updates fit.
#pragma once

#include <string>
#include <string_view>

struct RunningSystem {
  std::string processor;      // in Debian's words, such as "amd64"
  std::string version;        // of Debian; empty if it is unknown, as for a system that is only like Debian
  bool isLikeDebian = false;  // installs Debian's packages
};

// Reads what os-release(5) says. Skips lines that it does not understand.
RunningSystem systemOf(std::string_view osRelease);

// Returns the system of /etc/os-release or, without it, of /usr/lib/os-release; without both, a system that is not like
// Debian.
RunningSystem runningSystem();
