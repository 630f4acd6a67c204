// Alerts, through AppKit.
#pragma once

#include "platform/user_interface.h"

// Uses NSApplication and NSAlert.
class AppKitUserInterface : public UserInterface {
 public:
  void becomeAccessory() override;
  void activateIgnoringOthers() override;

  // Escape presses the button "Cancel". Returns the last button if the dialog ends without a button.
  std::size_t runModal(const Alert& alert) override;
};
