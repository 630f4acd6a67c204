#include "platform/macos/desktop/appkit_controls.h"

#include <algorithm>

#include "platform/macos/conversions.h"

void AppKitButton::setAccessibilityLabel(const std::string& label) { button_.accessibilityLabel = stringOf(label); }

void AppKitPopUpButton::setAccessibilityLabel(const std::string& label) { popUp_.accessibilityLabel = stringOf(label); }

std::size_t AppKitPopUpButton::selectedIndex() const {
  return static_cast<std::size_t>(std::max<NSInteger>(popUp_.indexOfSelectedItem, 0));
}

void AppKitPopUpButton::select(std::size_t index) {
  if (index < static_cast<std::size_t>(popUp_.numberOfItems)) [popUp_ selectItemAtIndex:static_cast<NSInteger>(index)];
}

void AppKitDatePicker::setAccessibilityLabel(const std::string& label) { picker_.accessibilityLabel = stringOf(label); }

// The default button's key presses it without moving the focus, so the field may still be editing.
Instant AppKitDatePicker::dateValue() const {
  [picker_.window makeFirstResponder:nil];
  return instantOf(picker_.dateValue);
}

void AppKitDatePicker::setDateValue(Instant date) { picker_.dateValue = dateOf(date); }
