// The program's place in the menu bar, and the menu behind it.
#pragma once

#include <memory>
#include <string>

class MenuItem {
 public:
  virtual ~MenuItem() = default;
  virtual std::string title() const = 0;
  virtual void setTitle(const std::string& title) = 0;
  virtual void setEnabled(bool enabled) = 0;
};

class Menu {
 public:
  virtual ~Menu() = default;

  // Whether the platform decides by itself which items are enabled, each time that the menu opens. It does unless
  // told otherwise.
  virtual void setAutoenablesItems(bool autoenables) = 0;
};

class StatusItem {
 public:
  virtual ~StatusItem() = default;
  virtual std::shared_ptr<Menu> menu() const = 0;
};
