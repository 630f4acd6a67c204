#include "platform/macos/desktop/appkit_menu.h"

#include <utility>

#include "platform/macos/conversions.h"
#include "platform/macos/desktop/action_target.h"

std::string AppKitMenuItem::title() const { return textOf(item_.title); }

void AppKitMenuItem::setTitle(const std::string& title) { item_.title = stringOf(title); }

std::shared_ptr<MenuItem> AppKitMenu::addItem(const std::string& title, Action action) {
  NSMenuItem* const item = [menu_ addItemWithTitle:stringOf(title) action:@selector(performAction:) keyEquivalent:@""];
  ActionTarget* const target = [[ActionTarget alloc] initWithAction:std::move(action)];
  item.target = target;
  item.representedObject = target;  // an item holds its target weakly
  return std::make_shared<AppKitMenuItem>(item);
}

void AppKitMenu::addSeparator() { [menu_ addItem:[NSMenuItem separatorItem]]; }
