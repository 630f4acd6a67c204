// A window, through AppKit.
#pragma once

#import <AppKit/AppKit.h>

#include <vector>

#include "platform/macos/desktop/action_target.h"
#include "platform/macos/objective_c.h"
#include "platform/window.h"

// Makes a window open on the user's current Space, also beside another application's full-screen window. By default, a
// window stays on the Space that it first opened on.
void openOnCurrentSpace(NSWindow* window);

class AppKitWindow : public Window {
 public:
  explicit AppKitWindow(const WindowDescription& description);
  // The run loop releases the NSWindow later, because an action of one of its controls may destroy this object.
  ~AppKitWindow() override;
  AppKitWindow(const AppKitWindow&) = delete;
  AppKitWindow& operator=(const AppKitWindow&) = delete;

  std::shared_ptr<Button> add(const PushButton& button) override;
  std::shared_ptr<Button> add(const CheckBox& checkBox) override;
  std::shared_ptr<PopUpButton> add(const PopUp& popUp) override;
  std::shared_ptr<DatePicker> addTimePicker(const Frame& frame) override;
  void add(const Label& label) override;
  void add(const Image& image) override;

  void center() override;
  void makeKeyAndOrderFront() override;
  void orderOut() override;

 private:
  void place(NSView* view, const Frame& frame);
  void placeControl(NSControl* control, const Frame& frame, const Action& action);

  NSWindow* window_;
  std::vector<ActionTarget*> targets_;  // the controls keep weak references
  NSView* lastControl_ = nil;           // the last in the Tab order
};
