#include "platform/macos/desktop/appkit_screen.h"

#include "platform/macos/desktop/appkit_menu.h"
#include "platform/macos/desktop/appkit_status_item.h"
#include "platform/macos/desktop/appkit_window.h"

std::shared_ptr<StatusItem> AppKitScreen::makeStatusItem() { return std::make_shared<AppKitStatusItem>(); }

std::shared_ptr<Menu> AppKitScreen::makeMenu() { return std::make_shared<AppKitMenu>(); }

std::shared_ptr<Window> AppKitScreen::makeWindow(const WindowDescription& description) {
  return std::make_shared<AppKitWindow>(description);
}
