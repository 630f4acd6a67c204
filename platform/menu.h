// The program's place in the menu bar, and the menu behind it.
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
  // Whether it has a check mark.
  virtual void setOn(bool on) = 0;
};

class Menu {
 public:
  virtual ~Menu() = default;

  // Adds an item at the end, without a key equivalent, enabled and without a check mark.
  virtual std::shared_ptr<MenuItem> addItem(const std::string& title, Action action) = 0;
  virtual void addSeparator() = 0;

  // Whether the platform decides by itself which items are enabled, each time that the menu opens. It does unless
  // told otherwise.
  virtual void setAutoenablesItems(bool autoenables) = 0;
};

// An image of the platform's own set of symbols.
struct SymbolImage {
  std::string name;                      // "bookmark"
  std::string accessibilityDescription;  // what is said in its place
  bool isTemplate = false;               // drawn in the colours of what it is on, light or dark
};

// A square in the menu bar.
class StatusItem {
 public:
  virtual ~StatusItem() = default;
  virtual void setImage(const SymbolImage& image) = 0;
  virtual void setToolTip(const std::string& text) = 0;
  // Whether it is drawn as if nothing could be done with it.
  virtual void setAppearsDisabled(bool appearsDisabled) = 0;
  virtual void setMenu(std::shared_ptr<Menu> menu) = 0;
  virtual std::shared_ptr<Menu> menu() const = 0;
};
