// Alerts, and the application's place on the desktop.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

// A modal dialog. If `buttons` is empty, it has the platform's single default button.
struct Alert {
  std::string messageText;
  std::string informativeText;
  std::vector<std::string> buttons;  // the first is the default
};

class UserInterface {
 public:
  virtual ~UserInterface() = default;

  // Removes this application from the Dock and from the list of running applications.
  virtual void becomeAccessory() = 0;

  // Brings this application to the front, even if another application is active.
  virtual void activateIgnoringOthers() = 0;

  // Shows the dialog and waits for the user. Returns the index of the chosen button; 0 for the default button of an
  // alert without buttons.
  virtual std::size_t runModal(const Alert& alert) = 0;
};
