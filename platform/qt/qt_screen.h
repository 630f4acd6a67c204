// Status item, menus and windows on Qt's widgets.
#pragma once

#include <memory>

#include "platform/linux/session/event_loop.h"
#include "platform/qt/qt_status_item.h"
#include "platform/screen.h"

// A QApplication must exist as long as this and all that it has made. Actions must not throw.
class QtScreen : public Screen {
 public:
  // The loop must outlive it and its status items.
  explicit QtScreen(EventLoop& loop) : loop_(loop) {}

  std::shared_ptr<StatusItem> makeStatusItem() override;
  std::shared_ptr<Menu> makeMenu() override;
  std::shared_ptr<Window> makeWindow(const WindowDescription& description) override;

  // Returns true if there is a status item but no tray that shows it.
  bool isWithoutTray() const;

  // Opens the menu of the last status item at the pointer; a no-op without an item or a menu.
  void popUpMenu();

 private:
  EventLoop& loop_;
  std::weak_ptr<QtStatusItem> statusItem_;  // the last one made
};
