#include "tests/support/virtual_running_applications.h"

namespace {

class VirtualProcess : public RunningApplication {
 public:
  explicit VirtualProcess(int identifier) : identifier_(identifier) {}
  int processIdentifier() const override { return identifier_; }
  std::optional<std::string> bundleIdentifier() const override { return {}; }
  bool terminate() override { return false; }

 private:
  int identifier_;
};

}  // namespace

std::vector<std::shared_ptr<RunningApplication>> VirtualRunningApplications::withBundleIdentifier(
    const std::string& identifier) {
  return journal_.perform("running?", identifier, [&] {
    std::vector<std::shared_ptr<RunningApplication>> running;
    for (const int process : processes_[identifier]) running.push_back(std::make_shared<VirtualProcess>(process));
    return running;
  });
}

int VirtualRunningApplications::start(const std::string& identifier) {
  processes_[identifier].push_back(nextProcess_);
  return nextProcess_++;
}

void VirtualRunningApplications::end(const std::string& identifier) { processes_.erase(identifier); }
