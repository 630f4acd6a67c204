#include "platform/macos/desktop/appkit_status_item.h"

#include <utility>

#include "platform/macos/conversions.h"

namespace {

// As large as the symbols of the system's own items.
constexpr CGFloat symbolSize = 16;

}  // namespace

// AppKit stores the item's place in the menu bar, and whether the user has hidden it, under this name. By default the
// name is a number, which may change.
AppKitStatusItem::AppKitStatusItem() { item_.autosaveName = @"Quillery"; }

AppKitStatusItem::~AppKitStatusItem() { [NSStatusBar.systemStatusBar removeStatusItem:item_]; }

void AppKitStatusItem::setImage(const SymbolImage& image) {
  NSImageSymbolConfiguration* const configuration =
      [NSImageSymbolConfiguration configurationWithPointSize:symbolSize weight:NSFontWeightRegular];
  NSImage* const symbol = [[NSImage imageWithSystemSymbolName:stringOf(image.name)
                                     accessibilityDescription:stringOf(image.accessibilityDescription)]
      imageWithSymbolConfiguration:configuration];
  [symbol setTemplate:image.isTemplate];
  item_.button.image = symbol;
}

void AppKitStatusItem::setToolTip(const std::string& text) { item_.button.toolTip = stringOf(text); }

void AppKitStatusItem::setMenu(std::shared_ptr<Menu> menu) {
  menu_ = std::dynamic_pointer_cast<AppKitMenu>(std::move(menu));
  item_.menu = menu_ ? menu_->menu() : nil;
}
