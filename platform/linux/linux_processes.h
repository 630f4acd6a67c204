// Services of Linux for processes.
#pragma once

#include <string>
#include <vector>

#include "platform/processes.h"

class LinuxProcesses : public Processes {
 public:
  // Returns a UUID of version 4 from the kernel's random bytes.
  std::string randomUuid() override;

  int processIdentifier() override;
  // Returns the real user ID, not the effective one.
  unsigned userIdentifier() override;

  bool writesToTerminal() override;
  std::optional<std::string> environmentVariable(const std::string& name) override;
  std::string workingFolder() override;

  // `path` is not searched for in PATH. The program inherits this process's environment and working folder; its signals
  // have their default handling.
  //
  // /bin/launchctl does not exist on Linux. For this path, runs quillery-launchctl instead, a helper program that takes
  // the same arguments (see helperProgram).
  int run(const std::string& path, const std::vector<std::string>& arguments) override;
  void pause(std::chrono::milliseconds duration) override;
};
