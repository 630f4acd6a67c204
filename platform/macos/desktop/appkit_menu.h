// A menu, through AppKit.
#pragma once

#import <AppKit/AppKit.h>

#include <vector>

#include "platform/macos/desktop/action_target.h"
#include "platform/macos/objective_c.h"
#include "platform/menu.h"

class AppKitMenuItem : public MenuItem {
 public:
  explicit AppKitMenuItem(NSMenuItem* item) : item_(item) {}

  std::string title() const override;
  void setTitle(const std::string& title) override;
  void setEnabled(bool enabled) override { item_.enabled = enabled; }
  void setOn(bool on) override { item_.state = on ? NSControlStateValueOn : NSControlStateValueOff; }

 private:
  NSMenuItem* item_;
};

// AppKit closes the menu before it calls an item's action, so an action may show a dialog. With automatic enabling,
// every item is enabled, because every item has a target.
class AppKitMenu : public Menu {
 public:
  std::shared_ptr<MenuItem> addItem(const std::string& title, Action action) override;
  void addSeparator() override;
  void setAutoenablesItems(bool autoenables) override { menu_.autoenablesItems = autoenables; }

  NSMenu* menu() const { return menu_; }

 private:
  NSMenu* menu_ = [[NSMenu alloc] initWithTitle:@""];
  std::vector<ActionTarget*> targets_;  // the items keep weak references
};
