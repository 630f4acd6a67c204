// Alerts by Qt's dialogs.
#pragma once

#include "platform/qt/qt_application.h"
#include "platform/user_interface.h"

class QtUserInterface : public UserInterface {
 public:
  // The application must outlive it.
  explicit QtUserInterface(const QtApplication& application) : application_(application) {}

  // There is no more to it: a program is among the running ones here only while it has a window.
  void becomeAccessory() override {}

  // Raises the dialog or the window that is in front among the program's own. If there is none, the next dialog is
  // raised. A desktop may let it call for attention instead.
  void activateIgnoringOthers() override;

  // Once the application terminates, and from then on, the answer is that of AlertDialog without a button pressed.
  std::size_t runModal(const Alert& alert) override;

 private:
  const QtApplication& application_;
  bool activatesNext_ = false;
};
