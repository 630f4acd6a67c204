#include "platform/macos/desktop/appkit_controls.h"

#include <algorithm>

#include "platform/macos/conversions.h"

std::size_t AppKitPopUpButton::selectedIndex() const {
  return static_cast<std::size_t>(std::max<NSInteger>(popUp_.indexOfSelectedItem, 0));
}

void AppKitPopUpButton::select(std::size_t index) {
  if (index < static_cast<std::size_t>(popUp_.numberOfItems)) [popUp_ selectItemAtIndex:static_cast<NSInteger>(index)];
}

// The default button's key presses it without moving the focus, so the field may still be editing.
Instant AppKitDatePicker::dateValue() const {
  [picker_.window makeFirstResponder:nil];
  return instantOf(picker_.dateValue);
}

void AppKitDatePicker::setDateValue(Instant date) { picker_.dateValue = dateOf(date); }
