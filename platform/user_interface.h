// What a person sees.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

// A modal dialog. Without buttons it has the platform's own single one.
struct Alert {
  std::string messageText;
  std::string informativeText;
  std::vector<std::string> buttons;  // the first is the default
};

class UserInterface {
 public:
  virtual ~UserInterface() = default;

  // Makes this an application without a Dock icon or a place among the running windows.
  virtual void becomeAccessory() = 0;

  // Brings this application to the front, whatever else is there.
  virtual void activateIgnoringOthers() = 0;

  // Shows the dialog and waits; answers the index of the button chosen.
  virtual std::size_t runModal(const Alert& alert) = 0;
};
