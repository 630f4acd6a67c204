#include "tests/support/virtual_running_applications.h"

#include <algorithm>
#include <cerrno>
#include <utility>

#include "platform/error.h"

class VirtualRunningApplications::VirtualProcess : public RunningApplication {
 public:
  VirtualProcess(VirtualRunningApplications& applications, int process, std::string identifier, QuitBehavior behavior)
      : applications_(applications), process_(process), identifier_(std::move(identifier)), behavior_(behavior) {}

  int processIdentifier() const override { return process_; }
  std::optional<std::string> bundleIdentifier() const override { return identifier_; }
  bool terminate() override { return applications_.quit(process_); }

  const std::string& identifier() const { return identifier_; }
  const QuitBehavior& behavior() const { return behavior_; }

 private:
  VirtualRunningApplications& applications_;
  int process_;
  std::string identifier_;
  QuitBehavior behavior_;
};

std::vector<std::shared_ptr<RunningApplication>> VirtualRunningApplications::withBundleIdentifier(
    const std::string& identifier) {
  return journal_.perform("running?", identifier, [&] {
    if (isUnresponsive_)
      throw Error("SessionBus", ETIMEDOUT, "The session bus couldn’t be asked: Connection timed out.");
    std::vector<std::shared_ptr<RunningApplication>> running;
    for (const auto& process : processes_)
      if (process->identifier() == identifier) running.push_back(process);
    return running;
  });
}

int VirtualRunningApplications::start(const std::string& identifier, const QuitBehavior& behavior) {
  startAs(nextProcess_, identifier, behavior);
  return nextProcess_++;
}

void VirtualRunningApplications::startAs(int process, const std::string& identifier, const QuitBehavior& behavior) {
  processes_.push_back(std::make_shared<VirtualProcess>(*this, process, identifier, behavior));
}

void VirtualRunningApplications::end(const std::string& identifier) {
  const auto all = processes_;
  for (const auto& process : all)
    if (process->identifier() == identifier) endProcess(process->processIdentifier());
}

void VirtualRunningApplications::endProcess(int process) {
  const auto found = std::ranges::find(processes_, process, &VirtualProcess::processIdentifier);
  if (found == processes_.end()) return;
  const std::shared_ptr<VirtualProcess> ended = *found;
  processes_.erase(found);
  if (terminated_) terminated_(ended);
}

int VirtualRunningApplications::count(const std::string& identifier) const {
  return static_cast<int>(std::ranges::count(processes_, identifier, &VirtualProcess::identifier));
}

std::vector<VirtualRunningApplications::Process> VirtualRunningApplications::processes() const {
  std::vector<Process> processes;
  for (const auto& process : processes_) processes.push_back({process->processIdentifier(), process->behavior()});
  return processes;
}

bool VirtualRunningApplications::quit(int process) {
  return journal_.perform("quit", std::to_string(process), [&] {
    const auto found = std::ranges::find(processes_, process, &VirtualProcess::processIdentifier);
    if (found == processes_.end() || (*found)->behavior().isRefused) return false;
    const QuitBehavior behavior = (*found)->behavior();
    if (!behavior.quitsAfter) return true;
    loop_.elsewhere(
        *behavior.quitsAfter, [this, process] { endProcess(process); }, "end of " + std::to_string(process));
    if (behavior.restartsAfter)
      loop_.elsewhere(
          *behavior.quitsAfter + *behavior.restartsAfter,
          [this, identifier = (*found)->identifier(), behavior] { start(identifier, behavior); }, "restart");
    return true;
  });
}
