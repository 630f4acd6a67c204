// The applications that are running, by the names that they own on the session bus.
#pragma once

#include <chrono>
#include <memory>
#include <string>
#include <vector>

#include "platform/linux/session_bus.h"
#include "platform/running_applications.h"

// An application's identifier is its name on the session bus, so one that owns the name, or waits in line for it, is
// running. Nothing runs where there is no bus, where nobody owns the name, or where the bus does not answer. Asking
// starts no application, and no bus.
class SessionBusApplications : public RunningApplications {
 public:
  // How long a hung bus may hold up one question, and a bus or an application one request to quit, everything included.
  static constexpr std::chrono::seconds defaultPatience{2};

  explicit SessionBusApplications(std::chrono::microseconds patience = defaultPatience) : patience_(patience) {}

  // One entry for each process, in the order of the line; a process that leaves meanwhile is left out. `terminate` of
  // an entry is what quit_request.h says; each entry can be used without this, and from any thread.
  std::vector<std::shared_ptr<RunningApplication>> withBundleIdentifier(const std::string& identifier) override;

 private:
  std::chrono::microseconds patience_;
  BusHandle bus_;  // opened by the first question, and again once it broke
};
