// The desktop's programs for addresses, folders and files.
#pragma once

#include <chrono>
#include <memory>
#include <string>

#include "platform/linux/session/bus_connection.h"
#include "platform/linux/session/clock_timers.h"
#include "platform/linux/session/event_loop.h"

// Opens an address, or a folder or file by its path, in the user's program for it, with xdg-open. Ignores a target that
// xdg-open would take for an option. Failures are not reported.
void openWithDesktop(const std::string& target);

class FileManager {
 public:
  // The usual timeout of a D-Bus call, in which the file manager may have to start.
  static constexpr std::chrono::seconds defaultTimeout{25};

  // The loop must outlive it. Throws Error if the system creates no timer.
  explicit FileManager(EventLoop& loop, std::chrono::milliseconds timeout = defaultTimeout)
      : loop_(loop), timeout_(timeout), clock_(loop, CLOCK_MONOTONIC) {}

  // Asks the file manager on the session bus to show the file selected in its folder; the bus starts the file manager
  // if needed. If that fails or takes longer than the timeout, opens the folder instead.
  void reveal(const std::string& path);

 private:
  EventLoop& loop_;
  std::chrono::milliseconds timeout_;
  ClockTimers clock_;
  std::unique_ptr<BusConnection> bus_;  // stays open, because the bus drops the calls of a closed connection
};
