#include "platform/macos/desktop/appkit_menu.h"

#include <utility>

#include "platform/macos/conversions.h"

std::string AppKitMenuItem::title() const { return textOf(item_.title); }

void AppKitMenuItem::setTitle(const std::string& title) { item_.title = stringOf(title); }

std::shared_ptr<MenuItem> AppKitMenu::addItem(const std::string& title, Action action) {
  NSMenuItem* const item = [menu_ addItemWithTitle:stringOf(title) action:@selector(performAction:) keyEquivalent:@""];
  targets_.push_back([[ActionTarget alloc] initWithAction:std::move(action)]);
  item.target = targets_.back();
  return std::make_shared<AppKitMenuItem>(item);
}

void AppKitMenu::addSeparator() { [menu_ addItem:[NSMenuItem separatorItem]]; }
