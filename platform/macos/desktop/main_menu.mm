#include "platform/macos/desktop/main_menu.h"

namespace {

NSMenu* addSubmenu(NSMenu* menu, NSString* title) {
  NSMenu* const submenu = [[NSMenu alloc] initWithTitle:title];
  [menu addItemWithTitle:title action:nil keyEquivalent:@""].submenu = submenu;
  return submenu;
}

}  // namespace

// An item without a target sends its action to the first object of the responder chain that implements it. The
// Command key is an item's default modifier.
NSMenu* mainMenu() {
  NSMenu* const menu = [[NSMenu alloc] initWithTitle:@""];
  [addSubmenu(menu, @"Quillery") addItemWithTitle:@"Quit" action:@selector(terminate:) keyEquivalent:@"q"];
  [addSubmenu(menu, @"File") addItemWithTitle:@"Close" action:@selector(performClose:) keyEquivalent:@"w"];
  NSMenu* const edit = addSubmenu(menu, @"Edit");
  [edit addItemWithTitle:@"Cut" action:@selector(cut:) keyEquivalent:@"x"];
  [edit addItemWithTitle:@"Copy" action:@selector(copy:) keyEquivalent:@"c"];
  [edit addItemWithTitle:@"Paste" action:@selector(paste:) keyEquivalent:@"v"];
  [edit addItemWithTitle:@"Select All" action:@selector(selectAll:) keyEquivalent:@"a"];
  return menu;
}
