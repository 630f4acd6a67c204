// The companion on a virtual machine.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/support/bookmark_places.h"
#include "tests/support/program.h"
#include "tests/support/virtual_machine.h"

class CompanionMachine {
 public:
  CompanionMachine(const CompanionMachine&) = delete;
  CompanionMachine& operator=(const CompanionMachine&) = delete;

 protected:
  CompanionMachine() = default;
  ~CompanionMachine() = default;

  // Runs the companion once at the machine's time. Returns the output of this run only.
  Ending run(const std::vector<std::string>& arguments);

  // Does the same with this text as standard input.
  Ending runWithInput(const std::string& input, const std::vector<std::string>& arguments);

  VirtualMachine machine_;
};
