// The window of an alert.
#pragma once

#include <cstddef>
#include <optional>

#include "platform/qt/text_dialog.h"
#include "platform/user_interface.h"

// The buttons are in order from the left, and the first is the default: Return presses it whichever button has the
// focus. Escape and closing the window press the button "Cancel" or the only button, and are no-ops if there is
// neither.
class AlertDialog : public TextDialog {
 public:
  explicit AlertDialog(const Alert& alert);

  // Returns the index of the pressed button. If none was pressed because the application ends, returns the button of
  // Escape or, if there is none, the last one, because that is the least likely to start something.
  std::size_t answer() const;

 private:
  std::size_t last_ = 0;
  std::optional<std::size_t> cancel_;
  std::optional<std::size_t> pressed_;
};
