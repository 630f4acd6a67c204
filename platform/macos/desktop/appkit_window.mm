#include "platform/macos/desktop/appkit_window.h"

#include "platform/macos/conversions.h"
#include "platform/macos/desktop/appkit_controls.h"

namespace {

NSRect rectangleOf(const Frame& frame) { return NSMakeRect(frame.x, frame.y, frame.width, frame.height); }

NSString* charactersOf(KeyEquivalent key) {
  switch (key) {
    case KeyEquivalent::returnKey: return @"\r";
    case KeyEquivalent::escape: return @"\x1b";
    case KeyEquivalent::none: break;
  }
  return @"";
}

}  // namespace

void openOnCurrentSpace(NSWindow* window) {
  window.collectionBehavior =
      NSWindowCollectionBehaviorMoveToActiveSpace | NSWindowCollectionBehaviorFullScreenAuxiliary;
}

AppKitWindow::AppKitWindow(const WindowDescription& description) {
  NSWindowStyleMask style = NSWindowStyleMaskTitled;
  if (description.isClosable) style |= NSWindowStyleMaskClosable;
  window_ = [[NSWindow alloc] initWithContentRect:NSMakeRect(0, 0, description.width, description.height)
                                        styleMask:style
                                          backing:NSBackingStoreBuffered
                                            defer:NO];
  window_.releasedWhenClosed = NO;
  window_.restorable = NO;
  window_.autorecalculatesKeyViewLoop = NO;
  openOnCurrentSpace(window_);
  window_.title = stringOf(description.title);
}

AppKitWindow::~AppKitWindow() {
  [window_ orderOut:nil];
  NSWindow* const window = window_;
  [NSRunLoop.mainRunLoop performInModes:@[ NSRunLoopCommonModes ]
                                  block:^{
                                    static_cast<void>(window);  // captured, so it lives as long as the block
                                  }];
}

std::shared_ptr<Button> AppKitWindow::add(const PushButton& button) {
  NSButton* const control = [NSButton buttonWithTitle:stringOf(button.title) target:nil action:nil];
  control.bezelStyle = NSBezelStyleRounded;
  control.keyEquivalent = charactersOf(button.key);
  placeControl(control, button.frame, button.action);
  return std::make_shared<AppKitButton>(control);
}

std::shared_ptr<Button> AppKitWindow::add(const CheckBox& checkBox) {
  NSButton* const control = [NSButton checkboxWithTitle:stringOf(checkBox.title) target:nil action:nil];
  control.tag = checkBox.tag;
  placeControl(control, checkBox.frame, checkBox.action);
  return std::make_shared<AppKitButton>(control);
}

// The items are added to the menu, because NSPopUpButton removes an existing item of the same title.
std::shared_ptr<PopUpButton> AppKitWindow::add(const PopUp& popUp) {
  NSPopUpButton* const control = [[NSPopUpButton alloc] initWithFrame:rectangleOf(popUp.frame) pullsDown:NO];
  for (const std::string& item : popUp.items)
    [control.menu addItemWithTitle:stringOf(item) action:nil keyEquivalent:@""];
  if (!popUp.items.empty()) [control selectItemAtIndex:0];
  placeControl(control, popUp.frame, popUp.action);
  return std::make_shared<AppKitPopUpButton>(control);
}

std::shared_ptr<DatePicker> AppKitWindow::addTimePicker(const Frame& frame) {
  NSDatePicker* const control = [[NSDatePicker alloc] initWithFrame:rectangleOf(frame)];
  control.datePickerStyle = NSDatePickerStyleTextFieldAndStepper;
  control.datePickerElements = NSDatePickerElementFlagHourMinute;
  placeControl(control, frame, nullptr);
  return std::make_shared<AppKitDatePicker>(control);
}

void AppKitWindow::add(const Label& label) {
  NSString* const text = stringOf(label.text);
  NSTextField* const field =
      label.wraps ? [NSTextField wrappingLabelWithString:text] : [NSTextField labelWithString:text];
  field.font = label.isBold ? [NSFont boldSystemFontOfSize:label.fontSize] : [NSFont systemFontOfSize:label.fontSize];
  if (label.isCentered) field.alignment = NSTextAlignmentCenter;
  place(field, label.frame);
}

void AppKitWindow::add(const Image& image) {
  NSImageView* const view = [[NSImageView alloc] initWithFrame:rectangleOf(image.frame)];
  view.imageScaling = NSImageScaleProportionallyUpOrDown;
  view.image = [[NSImage alloc] initWithContentsOfFile:stringOf(image.path)];
  view.accessibilityElement = NO;
  place(view, image.frame);
}

void AppKitWindow::center() { [window_ center]; }

// Since macOS 14, activating the application is only a request. makeKeyAndOrderFront: alone leaves the window of an
// inactive application behind the active one's windows.
void AppKitWindow::makeKeyAndOrderFront() {
  [window_ makeKeyAndOrderFront:nil];
  [window_ orderFrontRegardless];
}

void AppKitWindow::orderOut() { [window_ orderOut:nil]; }

void AppKitWindow::place(NSView* view, const Frame& frame) {
  view.frame = rectangleOf(frame);
  [window_.contentView addSubview:view];
}

void AppKitWindow::placeControl(NSControl* control, const Frame& frame, const Action& action) {
  place(control, frame);
  if (action) {
    targets_.push_back([[ActionTarget alloc] initWithAction:action]);
    control.target = targets_.back();
    control.action = @selector(performAction:);
  }
  if (lastControl_ != nil)
    lastControl_.nextKeyView = control;
  else
    window_.initialFirstResponder = control;
  lastControl_ = control;
}
