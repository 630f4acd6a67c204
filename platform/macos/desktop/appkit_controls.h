// Wrappers of AppKit's controls. They may outlive their window, and then have no visible effect.
#pragma once

#import <AppKit/AppKit.h>

#include "platform/macos/objective_c.h"
#include "platform/window.h"

// A push button or a check box.
class AppKitButton : public Button {
 public:
  explicit AppKitButton(NSButton* button) : button_(button) {}
  void setAccessibilityLabel(const std::string& label) override;
  bool isOn() const override { return button_.state == NSControlStateValueOn; }
  void setOn(bool on) override { button_.state = on ? NSControlStateValueOn : NSControlStateValueOff; }
  void setEnabled(bool enabled) override { button_.enabled = enabled; }
  int tag() const override { return static_cast<int>(button_.tag); }

 private:
  NSButton* button_;
};

class AppKitPopUpButton : public PopUpButton {
 public:
  explicit AppKitPopUpButton(NSPopUpButton* popUp) : popUp_(popUp) {}
  void setAccessibilityLabel(const std::string& label) override;
  std::size_t selectedIndex() const override;
  // Ignores an index that is out of range.
  void select(std::size_t index) override;
  void setEnabled(bool enabled) override { popUp_.enabled = enabled; }

 private:
  NSPopUpButton* popUp_;
};

class AppKitDatePicker : public DatePicker {
 public:
  explicit AppKitDatePicker(NSDatePicker* picker) : picker_(picker) {}
  void setAccessibilityLabel(const std::string& label) override;
  // Ends the editing in the window first, because digits that are being typed do not count until then.
  Instant dateValue() const override;
  void setDateValue(Instant date) override;
  void setEnabled(bool enabled) override { picker_.enabled = enabled; }

 private:
  NSDatePicker* picker_;
};
