// The applications that run on a virtual machine.
#pragma once

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "platform/running_applications.h"
#include "tests/support/journal.h"

// Each question is noted as "running?" with the bundle identifier.
class VirtualRunningApplications : public RunningApplications {
 public:
  explicit VirtualRunningApplications(Journal& journal) : journal_(journal) {}

  std::vector<std::shared_ptr<RunningApplication>> withBundleIdentifier(const std::string& identifier) override;

  // Starts one more process of an application; answers its process identifier.
  int start(const std::string& identifier);
  // Ends all of an application's processes.
  void end(const std::string& identifier);

 private:
  Journal& journal_;
  std::map<std::string, std::vector<int>> processes_;
  int nextProcess_ = 501;
};
