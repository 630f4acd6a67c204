#include "platform/linux/session_bus_applications.h"

#include <algorithm>
#include <cstdint>
#include <optional>
#include <utility>

#include "platform/linux/quit_request.h"

namespace {

constexpr int connectionsTried = 2;  // one that broke since the last question, and a fresh one

class RunningProcess : public RunningApplication {
 public:
  RunningProcess(QuitAddressee process, std::chrono::microseconds patience)
      : process_(std::move(process)), patience_(patience) {}

  int processIdentifier() const override { return static_cast<int>(process_.process); }
  std::optional<std::string> bundleIdentifier() const override { return process_.identifier; }
  bool terminate() override { return requestQuit(process_, patience_); }

 private:
  QuitAddressee process_;
  std::chrono::microseconds patience_;
};

// The processes that own a name or wait for it, in the order of the line, each with all of its connections there.
std::vector<QuitAddressee> processesOwning(sd_bus* bus, const std::string& name, const Deadline& deadline) {
  std::vector<QuitAddressee> processes;
  for (const std::string& connection : connectionsOwning(bus, name, deadline)) {
    const std::optional<std::uint32_t> process = processOf(bus, connection, deadline);
    if (!process) continue;
    const auto known = std::find_if(processes.begin(), processes.end(),
                                    [&](const QuitAddressee& other) { return other.process == *process; });
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
  const Deadline deadline(patience_);
  for (int connection = 0; connection < connectionsTried; ++connection) {
    if (!isReady(bus_)) bus_ = openSessionBus(deadline);
    if (!bus_) return {};
    std::vector<std::shared_ptr<RunningApplication>> applications;
    for (QuitAddressee& process : processesOwning(bus_.get(), identifier, deadline))
      applications.push_back(std::make_shared<RunningProcess>(std::move(process), patience_));
    if (isReady(bus_)) return applications;
  }
  return {};
}
