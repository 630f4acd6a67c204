// The program's icon in the desktop's system tray.
#pragma once

#include <QObject>
#include <QSystemTrayIcon>
#include <functional>
#include <memory>
#include <string>

#include "platform/linux/session/event_loop.h"
#include "platform/menu.h"
#include "platform/qt/qt_menu.h"
#include "platform/qt/system_tray.h"

// A desktop may have no tray. Then a line on standard error reports that, and the icon appears once there is a tray. A
// QApplication must exist.
class QtStatusItem : public StatusItem {
 public:
  // The loop must outlive it.
  explicit QtStatusItem(EventLoop& loop);

  // The symbol "bookmark" is the program's own; the icon theme provides all others.
  void setImage(const SymbolImage& image) override;
  // An empty text shows the image's description.
  void setToolTip(const std::string& text) override;
  void setAppearsDisabled(bool appearsDisabled) override;
  // Runs posted work for a tenth of a second, in which the panel fetches the icon.
  void display() override;
  // The menu must be one of QtScreen. Either mouse button opens it.
  void setMenu(std::shared_ptr<Menu> menu) override;
  std::shared_ptr<Menu> menu() const override { return menu_; }

  bool isInTray() const { return trayIcon_ != nullptr; }
  // Opens the menu at the pointer; a no-op without a menu.
  void popUpMenu();

 private:
  // Calls `changed` when the desktop's colours change.
  class PaletteWatch : public QObject {
   public:
    explicit PaletteWatch(std::function<void()> changed);
    bool eventFilter(QObject* object, QEvent* event) override;

   private:
    std::function<void()> changed_;
  };

  void makeTrayIcon();
  QIcon icon() const;
  void updateIcon();
  void updateToolTip();

  std::shared_ptr<QtMenu> menu_;
  SymbolImage image_;
  std::string toolTip_;
  bool appearsDisabled_ = false;
  std::unique_ptr<QSystemTrayIcon> trayIcon_;  // null while there is no tray
  SystemTray tray_;
  PaletteWatch palette_{[this] { updateIcon(); }};
};
