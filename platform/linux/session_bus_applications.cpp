#include "platform/linux/session_bus_applications.h"

#include <algorithm>
#include <cstdint>
#include <optional>
#include <utility>

#include "platform/error.h"
#include "platform/linux/quit_request.h"

namespace {

class RunningProcess : public RunningApplication {
 public:
  RunningProcess(QuitTarget process, std::chrono::microseconds timeout)
      : process_(std::move(process)), timeout_(timeout) {}

  int processIdentifier() const override { return static_cast<int>(process_.process); }
  std::optional<std::string> bundleIdentifier() const override { return process_.identifier; }
  bool terminate() override { return requestQuit(process_, timeout_); }

 private:
  QuitTarget process_;
  std::chrono::microseconds timeout_;
};

// Returns the processes that own a name or are queued for it, in the order of the queue, each with all its connections
// there.
std::vector<QuitTarget> processesOwning(sd_bus* bus, const std::string& name, const Deadline& deadline) {
  std::vector<QuitTarget> processes;
  for (const std::string& connection : connectionsOwning(bus, name, deadline)) {
    const std::optional<std::uint32_t> process = processOf(bus, connection, deadline);
    if (!process) continue;
    const auto known = std::find_if(processes.begin(), processes.end(),
                                    [&](const QuitTarget& other) { return other.process == *process; });
    if (known != processes.end())
      known->connections.push_back(connection);
    else
      processes.push_back({name, *process, {connection}});
  }
  return processes;
}

}  // namespace

std::vector<std::shared_ptr<RunningApplication>> SessionBusApplications::withBundleIdentifier(
    const std::string& identifier) {
  const Deadline deadline(timeout_);
  if (isReady(bus_)) {
    try {
      return running(identifier, deadline);
    } catch (const Error&) {
      if (isReady(bus_)) throw;  // otherwise the bus has closed the connection, so try a new one
    }
  }
  connect(deadline);
  return bus_ ? running(identifier, deadline) : std::vector<std::shared_ptr<RunningApplication>>();
}

bool SessionBusApplications::areKnown() {
  if (!isReady(bus_)) connect(Deadline(timeout_));
  return bus_ != nullptr;
}

void SessionBusApplications::connect(const Deadline& deadline) {
  bus_ = nullptr;
  bus_ = openSessionBus(deadline);
}

std::vector<std::shared_ptr<RunningApplication>> SessionBusApplications::running(const std::string& identifier,
                                                                                 const Deadline& deadline) const {
  std::vector<std::shared_ptr<RunningApplication>> applications;
  for (QuitTarget& process : processesOwning(bus_.get(), identifier, deadline))
    applications.push_back(std::make_shared<RunningProcess>(std::move(process), timeout_));
  return applications;
}
