// The window of an alert.
#pragma once

#include <QClipboard>
#include <QDialog>
#include <QPushButton>
#include <QString>
#include <QWidget>
#include <cstddef>
#include <optional>
#include <vector>

#include "platform/user_interface.h"

// Shows all of its texts, which can be selected: long lines wrap, and texts taller than the screen scroll. The buttons
// are in order from the left, and the first is the default: Return presses it whichever button has the focus. Escape
// and closing the window press the button "Cancel" or the only button, and are no-ops if there is neither.
class AlertDialog : public QDialog {
 public:
  explicit AlertDialog(const Alert& alert);

  // Returns the index of the pressed button. If none was pressed because the application ends, returns the button of
  // Escape or, if there is none, the last one, because that is the least likely to start something.
  std::size_t answer() const;

 protected:
  void reject() override;

 private:
  QWidget* makeTexts(const Alert& alert);
  QWidget* makeIcon();
  void makeButtons(const std::vector<std::string>& titles);
  void cleanCopy(QClipboard::Mode mode);

  std::vector<QPushButton*> buttons_;
  std::optional<std::size_t> cancel_;
  std::optional<std::size_t> pressed_;
};
