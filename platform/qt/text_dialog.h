// The window of a text with buttons.
#pragma once

#include <QClipboard>
#include <QDialog>
#include <QHBoxLayout>
#include <QPushButton>
#include <QVBoxLayout>
#include <QWidget>
#include <string>

#include "platform/qt/key_equivalents.h"
#include "platform/window.h"

// Shows the program's icon, a bold heading and a text below it, whichever of the two is not empty. Both can be
// selected: long lines wrap, and texts taller than the screen scroll. Escape and closing the window press the button
// that was given to pressWithEscape(), and are no-ops if there is none.
class TextDialog : public QDialog {
 public:
  TextDialog(const std::string& heading, const std::string& text);

  // Adds a widget below the texts.
  void addContent(QWidget* content);

  // Adds a button on the right of the others. Connect its clicked(). The button of the Return key is the default.
  QPushButton& addButton(const std::string& title, KeyEquivalent key);
  void pressWithEscape(QPushButton& button) { escapeButton_ = &button; }

 protected:
  void reject() override;

 private:
  void cleanCopy(QClipboard::Mode mode);

  QVBoxLayout* column_ = nullptr;
  QHBoxLayout* buttons_ = nullptr;
  QPushButton* escapeButton_ = nullptr;
  Mnemonics mnemonics_;
};
