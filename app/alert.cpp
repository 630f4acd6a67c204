#include "app/alert.h"

#include <iostream>

#include "platform/platform.h"
#include "values/log_line.h"

bool automatic = false;

void alert(const std::string& title, const std::string& message) {
  if (automatic) {
    logLine(std::cout, title + ": " + message);
    return;
  }
  UserInterface& userInterface = platform().userInterface;
  userInterface.becomeAccessory();
  userInterface.activateIgnoringOthers();
  userInterface.runModal({title, message, {}});
}
