// The running applications, by the names that they own on the session bus.
#pragma once

#include <chrono>
#include <memory>
#include <string>
#include <vector>

#include "platform/linux/session_bus.h"
#include "platform/running_applications.h"

// An application's bundle identifier is its bus name, so every process that owns the name or is queued for it counts as
// running. None counts as running, or is known, if there is no bus; see openSessionBus. Never starts an application or
// a bus.
class SessionBusApplications : public RunningApplications {
 public:
  // The longest time that one call of withBundleIdentifier or terminate takes.
  static constexpr std::chrono::seconds defaultTimeout{2};

  explicit SessionBusApplications(std::chrono::microseconds timeout = defaultTimeout) : timeout_(timeout) {}

  // Returns one entry per process, in the order of the queue, without processes that end meanwhile. Throws Error if
  // there is a bus and it does not reply, within the timeout, or does not accept this process's connection. `terminate`
  // of an entry calls requestQuit. An entry may outlive this object, and may be used from any thread.
  std::vector<std::shared_ptr<RunningApplication>> withBundleIdentifier(const std::string& identifier) override;

  // Returns true if there is a bus.
  bool areKnown() override;

 private:
  void connect(const Deadline& deadline);
  std::vector<std::shared_ptr<RunningApplication>> running(const std::string& identifier,
                                                           const Deadline& deadline) const;

  std::chrono::microseconds timeout_;
  BusHandle bus_;  // opened by the first call, and again after it was closed
};
