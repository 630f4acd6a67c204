// The program's item in the menu bar, through AppKit.
#pragma once

#import <AppKit/AppKit.h>

#include "platform/macos/desktop/appkit_menu.h"
#include "platform/macos/objective_c.h"
#include "platform/menu.h"

class AppKitStatusItem : public StatusItem {
 public:
  AppKitStatusItem();
  ~AppKitStatusItem() override;
  AppKitStatusItem(const AppKitStatusItem&) = delete;
  AppKitStatusItem& operator=(const AppKitStatusItem&) = delete;

  // Shows no image if the system does not have the symbol.
  void setImage(const SymbolImage& image) override;
  void setToolTip(const std::string& text) override;
  void setAppearsDisabled(bool appearsDisabled) override { item_.button.appearsDisabled = appearsDisabled; }
  void display() override { [item_.button display]; }
  // Shows no menu unless AppKitScreen created it.
  void setMenu(std::shared_ptr<Menu> menu) override;
  std::shared_ptr<Menu> menu() const override { return menu_; }

 private:
  NSStatusItem* item_ = [NSStatusBar.systemStatusBar statusItemWithLength:NSSquareStatusItemLength];
  std::shared_ptr<AppKitMenu> menu_;
};
