// What the program puts on the screen, by Qt's widgets.
#pragma once

#include <memory>

#include "platform/qt/qt_status_item.h"
#include "platform/screen.h"

// There must be a QApplication before it and for as long as anything that it made is there. Actions must not throw.
class QtScreen : public Screen {
 public:
  std::shared_ptr<StatusItem> makeStatusItem() override;
  std::shared_ptr<Menu> makeMenu() override;
  std::shared_ptr<Window> makeWindow(const WindowDescription& description) override;

  // Whether there is a status item that waits for a tray: nobody can see it then.
  bool isWithoutTray() const;

  // Opens the menu of the last status item at the pointer, if that is there and has one.
  void popUpMenu();

 private:
  std::weak_ptr<QtStatusItem> statusItem_;  // the last one made
};
