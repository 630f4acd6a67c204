// The window of an alert.
#pragma once

#include <QDialog>
#include <QPushButton>
#include <QString>
#include <QWidget>
#include <cstddef>
#include <optional>
#include <vector>

#include "platform/user_interface.h"

// All of its texts are to be seen, lines being broken where they must; what is taller than the screen can be scrolled.
// The buttons are in their order from the left, the first being the default. Escape and closing the window press the
// button "Cancel", or the only one; where there is neither, they do nothing.
class AlertDialog : public QDialog {
 public:
  explicit AlertDialog(const Alert& alert);

  // The button that was pressed. Where none was, because the application ends, what Escape would have pressed, or else
  // the last: the one that is furthest from going ahead.
  std::size_t answer() const;

 protected:
  void reject() override;

 private:
  QWidget* makeTexts(const Alert& alert);
  QWidget* makeIcon();
  void makeButtons(const std::vector<std::string>& titles);

  std::vector<QPushButton*> buttons_;
  std::optional<std::size_t> cancel_;
  std::optional<std::size_t> pressed_;
};
