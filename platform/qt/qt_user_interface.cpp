#include "platform/qt/qt_user_interface.h"

#include <QApplication>
#include <QWidget>
#include <utility>

#include "platform/qt/alert_dialog.h"

namespace {

void activate(QWidget& window) {
  window.raise();
  window.activateWindow();
}

// Returns the modal dialog, else the active window, else any visible window; null if there is none.
QWidget* frontWindow() {
  if (QWidget* const modal = QApplication::activeModalWidget()) return modal;
  if (QWidget* const active = QApplication::activeWindow()) return active;
  for (QWidget* const widget : QApplication::topLevelWidgets())
    if (widget->isVisible() && (widget->windowType() == Qt::Window || widget->windowType() == Qt::Dialog))
      return widget;
  return nullptr;
}

}  // namespace

void QtUserInterface::activateIgnoringOthers() {
  QWidget* const window = frontWindow();
  activatesNext_ = window == nullptr;
  if (window != nullptr) activate(*window);
}

std::size_t QtUserInterface::runModal(const Alert& alert) {
  AlertDialog dialog(alert);
  if (application_.isTerminating()) return dialog.answer();
  dialog.setModal(true);
  dialog.show();
  if (std::exchange(activatesNext_, false)) activate(dialog);
  dialog.exec();
  return dialog.answer();
}
