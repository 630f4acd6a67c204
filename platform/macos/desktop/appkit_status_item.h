// The program's place in the menu bar.
#pragma once

#import <AppKit/AppKit.h>

#include "platform/macos/desktop/appkit_menu.h"
#include "platform/macos/objective_c.h"
#include "platform/menu.h"

class AppKitStatusItem : public StatusItem {
 public:
  AppKitStatusItem() = default;
  ~AppKitStatusItem() override;
  AppKitStatusItem(const AppKitStatusItem&) = delete;
  AppKitStatusItem& operator=(const AppKitStatusItem&) = delete;

  // A symbol that the system has not got is no image.
  void setImage(const SymbolImage& image) override;
  void setToolTip(const std::string& text) override;
  void setAppearsDisabled(bool appearsDisabled) override { item_.button.appearsDisabled = appearsDisabled; }
  // It must be one that AppKitScreen made.
  void setMenu(std::shared_ptr<Menu> menu) override;
  std::shared_ptr<Menu> menu() const override { return menu_; }

 private:
  NSStatusItem* item_ = [NSStatusBar.systemStatusBar statusItemWithLength:NSSquareStatusItemLength];
  std::shared_ptr<AppKitMenu> menu_;
};
