#include "platform/qt/window_order.h"

#include <QApplication>
#include <QPointer>

namespace {

// The desktop activates a window some time after it is asked to, so the active window may still be another one.
QPointer<QWidget>& lastOrderedFront() {
  static QPointer<QWidget> window;
  return window;
}

bool isOnScreen(const QWidget* window) { return window != nullptr && window->isVisible() && !window->isMinimized(); }

}  // namespace

void orderFront(QWidget& window) {
  lastOrderedFront() = &window;
  window.setWindowState(window.windowState() & ~Qt::WindowMinimized);
  window.show();
  window.raise();
  window.activateWindow();
}

QWidgetList visibleWindows() {
  QWidgetList windows;
  for (QWidget* const widget : QApplication::topLevelWidgets()) {
    const bool isWindow = widget->windowType() == Qt::Window || widget->windowType() == Qt::Dialog;
    if (isWindow && widget->isVisible()) windows.append(widget);
  }
  return windows;
}

QWidget* frontWindow() {
  if (QWidget* const modal = QApplication::activeModalWidget()) return modal;
  for (QWidget* const window : {lastOrderedFront().data(), QApplication::activeWindow()})
    if (isOnScreen(window)) return window;
  for (QWidget* const window : visibleWindows())
    if (isOnScreen(window)) return window;
  return nullptr;
}
