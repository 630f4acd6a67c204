#include "app/alert.h"

#include <iostream>

#include "platform/platform.h"
#include "values/harmless_text.h"

bool automatic = false;

void alert(const std::string& title, const std::string& message) {
  if (automatic) {
    std::cout << harmlessText(title + ": " + message) << '\n' << std::flush;
    return;
  }
  UserInterface& userInterface = platform().userInterface;
  userInterface.becomeAccessory();
  userInterface.activateIgnoringOthers();
  userInterface.runModal({title, message, {}});
}
