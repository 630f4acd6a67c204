// Keys that press buttons.
#pragma once

#include <QAbstractButton>
#include <QList>
#include <QString>

#include "platform/window.h"

// Makes the key press the button, whichever control of its window has the keyboard focus. Desktops differ in the keys
// that press the focused button; this key does not.
void pressWithKey(QAbstractButton& button, KeyEquivalent key);

// Gives letters to the controls of one window, each letter once: Alt and the letter operate the control.
class Mnemonics {
 public:
  // Returns the title of a control with its letter marked, see controlTitle. Prefers the first letters of words. A
  // title whose letters are all in use gets none.
  QString mark(const std::string& title);

 private:
  QString used_;
};
