// The applications that are running, by the names that they own on the session bus.
#pragma once

#include <chrono>
#include <memory>
#include <string>
#include <vector>

#include "platform/running_applications.h"

struct sd_bus;

// An application's identifier is its name on the session bus, so one that owns the name, or waits in line for it, is
// running. Nothing runs where there is no bus, where nobody owns the name, or where the bus does not answer. Asking
// starts no application, and no bus.
class SessionBusApplications : public RunningApplications {
 public:
  // How long a hung bus may hold up one question, everything included.
  static constexpr std::chrono::seconds defaultPatience{2};

  explicit SessionBusApplications(std::chrono::microseconds patience = defaultPatience) : patience_(patience) {}

  // One entry for each process, in the order of the line; a process that leaves meanwhile is left out.
  std::vector<std::shared_ptr<RunningApplication>> withBundleIdentifier(const std::string& identifier) override;

 private:
  struct Closer {
    void operator()(sd_bus* bus) const;
  };

  std::chrono::microseconds patience_;
  std::unique_ptr<sd_bus, Closer> bus_;  // opened by the first question, and again once it broke
};
