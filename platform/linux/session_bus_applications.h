// The running applications, by the names that they own on the session bus.
#pragma once

#include <chrono>
#include <memory>
#include <string>
#include <vector>

#include "platform/linux/session_bus.h"
#include "platform/running_applications.h"

// An application's bundle identifier is its bus name, so every process that owns the name or is queued for it counts as
// running. None counts as running if there is no bus or the bus does not reply. Never starts an application or a bus.
class SessionBusApplications : public RunningApplications {
 public:
  // The longest time that one call of withBundleIdentifier or terminate takes.
  static constexpr std::chrono::seconds defaultTimeout{2};

  explicit SessionBusApplications(std::chrono::microseconds timeout = defaultTimeout) : timeout_(timeout) {}

  // Returns one entry per process, in the order of the queue, without processes that end meanwhile. `terminate` of an
  // entry calls requestQuit. An entry may outlive this object, and may be used from any thread.
  std::vector<std::shared_ptr<RunningApplication>> withBundleIdentifier(const std::string& identifier) override;

 private:
  std::chrono::microseconds timeout_;
  BusHandle bus_;  // opened by the first call, and again after it was closed
};
