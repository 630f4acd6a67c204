// What Foundation offers to processes.
#pragma once

#include "platform/processes.h"

// NSUUID, NSProcessInfo and NSTask. Errors are Foundation's own.
class FoundationProcesses : public Processes {
 public:
  std::string randomUuid() override;
  int processIdentifier() override;
  // The user who started the process, whatever rights it has.
  unsigned userIdentifier() override;
  bool writesToTerminal() override;
  std::optional<std::string> environmentVariable(const std::string& name) override;
  std::string workingFolder() override;
  // The program has this process's environment and working folder. While it runs, the run loop may go on in its default
  // mode: that is how NSTask waits.
  int run(const std::string& path, const std::vector<std::string>& arguments) override;
};
