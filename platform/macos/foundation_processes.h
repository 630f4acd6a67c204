// Services for processes, through Foundation.
#pragma once

#include "platform/processes.h"

// Uses NSUUID, NSProcessInfo and NSTask, with Foundation's own errors.
class FoundationProcesses : public Processes {
 public:
  std::string randomUuid() override;
  int processIdentifier() override;
  // Returns the real user ID, not the effective one.
  unsigned userIdentifier() override;
  bool writesToTerminal() override;
  std::optional<std::string> environmentVariable(const std::string& name) override;
  std::string workingFolder() override;
  // The program inherits this process's environment and working folder.
  int run(const std::string& path, const std::vector<std::string>& arguments) override;
  void pause(std::chrono::milliseconds duration) override;
};
