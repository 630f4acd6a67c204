// The program's place in the desktop's tray of status icons.
#pragma once

#include <QObject>
#include <QSystemTrayIcon>
#include <functional>
#include <memory>
#include <string>

#include "platform/qt/qt_menu.h"
#include "platform/qt/system_tray.h"
#include "platform/menu.h"

// Not every desktop has a tray. Where there is none, a line on standard error says so, and the icon appears as soon as
// one does. There must be a QApplication.
class QtStatusItem : public StatusItem {
 public:
  QtStatusItem();

  // The symbol "bookmark" is the program's own; of others, the icon theme's is taken.
  void setImage(const SymbolImage& image) override;
  // Without one, the image's description is shown.
  void setToolTip(const std::string& text) override;
  void setAppearsDisabled(bool appearsDisabled) override;
  // It must be one that QtScreen made. Either button of the mouse opens it.
  void setMenu(std::shared_ptr<Menu> menu) override;
  std::shared_ptr<Menu> menu() const override { return menu_; }

  bool isInTray() const { return trayIcon_ != nullptr; }
  // Opens the menu at the pointer; nothing happens if there is none.
  void popUpMenu();

 private:
  // Calls `changed` when the desktop takes on other colours.
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
