// The user interface of a session without a screen.
#pragma once

#include <iostream>
#include <ostream>

#include "platform/user_interface.h"

// Prints the text of an alert instead of showing a dialog. Nobody can choose a button, so runModal returns the last
// one, which is the button that cancels.
class ConsoleUserInterface : public UserInterface {
 public:
  // `output` must outlive this object.
  explicit ConsoleUserInterface(std::ostream& output = std::cerr) : output_(output) {}

  void becomeAccessory() override {}
  void activateIgnoringOthers() override {}
  std::size_t runModal(const Alert& alert) override;

 private:
  std::ostream& output_;
};
