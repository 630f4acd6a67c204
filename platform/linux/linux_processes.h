// What the system offers to processes.
#pragma once

#include <string>

#include "platform/processes.h"

class LinuxProcesses : public Processes {
 public:
  // Version 4, of the kernel's random bytes. Throws Error if it gives none.
  std::string randomUuid() override;
};
