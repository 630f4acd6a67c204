#include "platform/qt/qt_user_interface.h"

#include <memory>
#include <utility>

#include "platform/qt/alert_dialog.h"
#include "platform/qt/window_order.h"

void QtUserInterface::activateIgnoringOthers() {
  QWidget* const window = frontWindow();
  activatesNext_ = window == nullptr;
  if (window != nullptr) orderFront(*window);
}

std::size_t QtUserInterface::runModal(const Alert& alert) {
  // Not on the stack: the order of windows remembers it for as long as it exists.
  const auto dialog = std::make_unique<AlertDialog>(alert);
  if (application_.isTerminating()) return dialog->answer();
  dialog->setModal(true);
  dialog->show();
  if (std::exchange(activatesNext_, false)) orderFront(*dialog);
  dialog->exec();
  return dialog->answer();
}
