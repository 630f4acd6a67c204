// Creates windows, menus and the status item, through AppKit.
#pragma once

#include "platform/screen.h"

// Actions must not throw.
class AppKitScreen : public Screen {
 public:
  std::shared_ptr<StatusItem> makeStatusItem() override;
  std::shared_ptr<Menu> makeMenu() override;
  std::shared_ptr<Window> makeWindow(const WindowDescription& description) override;
};
