#include "platform/macos/desktop/appkit_status_item.h"

#include <utility>

#include "platform/macos/conversions.h"

AppKitStatusItem::~AppKitStatusItem() { [NSStatusBar.systemStatusBar removeStatusItem:item_]; }

void AppKitStatusItem::setImage(const SymbolImage& image) {
  NSImage* const symbol = [NSImage imageWithSystemSymbolName:stringOf(image.name)
                                    accessibilityDescription:stringOf(image.accessibilityDescription)];
  [symbol setTemplate:image.isTemplate];
  item_.button.image = symbol;
}

void AppKitStatusItem::setToolTip(const std::string& text) { item_.button.toolTip = stringOf(text); }

void AppKitStatusItem::setMenu(std::shared_ptr<Menu> menu) {
  menu_ = std::dynamic_pointer_cast<AppKitMenu>(std::move(menu));
  item_.menu = menu_ ? menu_->menu() : nil;
}
