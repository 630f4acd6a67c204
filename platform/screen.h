// Creates what the program shows on the screen.
#pragma once

#include <memory>

#include "platform/menu.h"
#include "platform/window.h"

class Screen {
 public:
  virtual ~Screen() = default;

  // Adds an item to the menu bar.
  virtual std::shared_ptr<StatusItem> makeStatusItem() = 0;
  virtual std::shared_ptr<Menu> makeMenu() = 0;
  // Creates a hidden window without controls.
  virtual std::shared_ptr<Window> makeWindow(const WindowDescription& description) = 0;
};
