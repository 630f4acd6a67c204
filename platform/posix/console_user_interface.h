// The user interface of a session without a screen.
#pragma once

#include <iostream>
#include <ostream>

#include "platform/user_interface.h"

// Says on standard error what a dialog would have said. Nobody can answer, so the answer is the careful one: the last
// button, which is the one that cancels.
class ConsoleUserInterface : public UserInterface {
 public:
  // `output` must outlive this.
  explicit ConsoleUserInterface(std::ostream& output = std::cerr) : output_(output) {}

  void becomeAccessory() override {}
  void activateIgnoringOthers() override {}
  std::size_t runModal(const Alert& alert) override;

 private:
  std::ostream& output_;
};
