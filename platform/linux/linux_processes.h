// What the system offers to processes.
#pragma once

#include <string>
#include <vector>

#include "platform/processes.h"

class LinuxProcesses : public Processes {
 public:
  // Version 4, of the kernel's random bytes. Throws Error if it gives none.
  std::string randomUuid() override;

  int processIdentifier() override;
  // The user who started the process, whatever rights it has.
  unsigned userIdentifier() override;

  bool writesToTerminal() override;
  std::optional<std::string> environmentVariable(const std::string& name) override;
  std::string workingFolder() override;

  // The path is not searched for. The program has this process's environment and working folder, and the usual
  // handling of signals.
  //
  // One path stands for another: /bin/launchctl is a program that this system has not got, and the program brings one
  // of its own that answers to the same arguments, quillery-launchctl (helperProgram says where it is).
  int run(const std::string& path, const std::vector<std::string>& arguments) override;
};
