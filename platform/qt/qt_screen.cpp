#include "platform/qt/qt_screen.h"

#include "platform/qt/qt_menu.h"
#include "platform/qt/qt_window.h"

std::shared_ptr<StatusItem> QtScreen::makeStatusItem() {
  const auto item = std::make_shared<QtStatusItem>(loop_);
  statusItem_ = item;
  return item;
}

std::shared_ptr<Menu> QtScreen::makeMenu() { return std::make_shared<QtMenu>(); }

std::shared_ptr<Window> QtScreen::makeWindow(const WindowDescription& description) {
  return std::make_shared<QtWindow>(description);
}

bool QtScreen::isWithoutTray() const {
  const auto item = statusItem_.lock();
  return item && !item->isInTray();
}

void QtScreen::popUpMenu() {
  if (const auto item = statusItem_.lock()) item->popUpMenu();
}
