// What the program puts on the screen.
#pragma once

#include <memory>

#include "platform/menu.h"
#include "platform/window.h"

class Screen {
 public:
  virtual ~Screen() = default;

  // A place in the menu bar, for as long as there is a reference to it.
  virtual std::shared_ptr<StatusItem> makeStatusItem() = 0;
  virtual std::shared_ptr<Menu> makeMenu() = 0;
  virtual std::shared_ptr<Window> makeWindow(const WindowDescription& description) = 0;
};
