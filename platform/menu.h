// The program's item in the menu bar and its menu.
#pragma once

#include <memory>
#include <string>

#include "platform/window.h"

class MenuItem {
 public:
  virtual ~MenuItem() = default;
  virtual std::string title() const = 0;
  virtual void setTitle(const std::string& title) = 0;
  virtual void setEnabled(bool enabled) = 0;
  // Shows or hides the item's check mark.
  virtual void setOn(bool on) = 0;
};

class Menu {
 public:
  virtual ~Menu() = default;

  // Appends an item that is enabled and has neither a key equivalent nor a check mark.
  virtual std::shared_ptr<MenuItem> addItem(const std::string& title, Action action) = 0;
  virtual void addSeparator() = 0;

  // If true, which is the default, the platform itself enables and disables the items each time the menu opens.
  virtual void setAutoenablesItems(bool autoenables) = 0;
};

// An image from the platform's own set of symbols.
struct SymbolImage {
  std::string name;                      // such as "bookmark"
  std::string accessibilityDescription;  // for screen readers
  bool isTemplate = false;               // drawn in the colour of the text around it, light or dark
};

// A square item in the menu bar. It disappears when its last reference is released.
class StatusItem {
 public:
  virtual ~StatusItem() = default;
  virtual void setImage(const SymbolImage& image) = 0;
  virtual void setToolTip(const std::string& text) = 0;
  // Draws the item as if it were disabled. It keeps working.
  virtual void setAppearsDisabled(bool appearsDisabled) = 0;
  // Shows the changes above now instead of when the main loop runs again, because the main thread is about to be busy
  // for a while. May run posted work.
  virtual void display() = 0;
  virtual void setMenu(std::shared_ptr<Menu> menu) = 0;
  virtual std::shared_ptr<Menu> menu() const = 0;
};
