// Alerts on Qt's dialogs.
#pragma once

#include "platform/qt/qt_application.h"
#include "platform/user_interface.h"

class QtUserInterface : public UserInterface {
 public:
  // The application must outlive it.
  explicit QtUserInterface(const QtApplication& application) : application_(application) {}

  // No-op on Linux: only programs with a window are listed as running.
  void becomeAccessory() override {}

  // Raises the program's front dialog or window, or the next dialog if there is none now. The desktop may only mark it
  // as demanding attention.
  void activateIgnoringOthers() override;

  // Once the application is terminating, returns the answer of an AlertDialog without a pressed button.
  std::size_t runModal(const Alert& alert) override;

 private:
  const QtApplication& application_;
  bool activatesNext_ = false;
};
