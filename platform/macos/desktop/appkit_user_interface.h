// Alerts by AppKit.
#pragma once

#include "platform/user_interface.h"

// NSApplication and NSAlert.
class AppKitUserInterface : public UserInterface {
 public:
  void becomeAccessory() override;
  void activateIgnoringOthers() override;

  // Escape presses the button "Cancel". Should the dialog end without any button, the answer is the last one.
  std::size_t runModal(const Alert& alert) override;
};
