// Lets a test operate the program: stands for the menu bar, which a user would click, for Accessibility, which would
// show what is in the windows, and for what the session tells programs. Keys and the pointer come from the display.
//
// If the variable QUILLERY_RIG names a folder, the program listens at the socket "control" in it once it has launched.
// Each connection sends a line and gets a line of JSON: `menu`, `choose TITLE`, `windows`, `press WINDOW NUMBER` for a
// control of a window, `terminated IDENTIFIER`, `woke`, `reopen`, `can check YES` or `can check NO`.
#import <AppKit/AppKit.h>
#import <Sparkle/Sparkle.h>

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <string>

#include "tools/gnustep/replaced_methods.h"

namespace {

NSArray* commonModes() { return @[ NSRunLoopCommonModes ]; }

NSMenu* menu() { return [[NSStatusBar.systemStatusBar.items lastObject] menu]; }

// Puts a click on a control into the queue of events.
void click(NSView* control) {
  const NSRect frame = [control convertRect:control.bounds toView:nil];
  const NSPoint place = NSMakePoint(NSMinX(frame) + std::min(NSWidth(frame) / 2, 10.0), NSMidY(frame));
  for (const NSEventType type : {NSLeftMouseDown, NSLeftMouseUp})
    [NSApp postEvent:[NSEvent mouseEventWithType:type
                                        location:place
                                   modifierFlags:0
                                       timestamp:0
                                    windowNumber:control.window.windowNumber
                                         context:nil
                                     eventNumber:0
                                      clickCount:1
                                        pressure:1]
             atStart:NO];
}

NSDictionary* described(NSMenuItem* item) {
  return @{@"title" : item.title, @"enabled" : @(item.isEnabled), @"on" : @(item.state == NSControlStateValueOn)};
}

NSArray* describedMenu() {
  NSMutableArray* const items = [NSMutableArray array];
  for (NSMenuItem* item in menu().itemArray) [items addObject:item.isSeparatorItem ? [NSNull null] : described(item)];
  return items;
}

// x, y, width and height in pixels; y counts from the top.
NSArray* onScreen(NSRect frame) {
  const CGFloat height = NSScreen.mainScreen.frame.size.height;
  return @[ @(NSMinX(frame)), @(height - NSMaxY(frame)), @(NSWidth(frame)), @(NSHeight(frame)) ];
}

NSArray* frameOf(NSView* view) {
  const NSRect inWindow = [view convertRect:view.bounds toView:nil];
  NSRect frame = inWindow;
  frame.origin = [view.window convertBaseToScreen:inWindow.origin];
  return onScreen(frame);
}

NSString* kindOf(NSView* view) {
  if ([view isKindOfClass:[NSPopUpButton class]]) return @"combo box";
  if ([view isKindOfClass:[NSDatePicker class]]) return @"spin box";
  if ([view isKindOfClass:[NSButton class]]) {
    NSButton* const button = static_cast<NSButton*>(view);
    if (button.isBordered) return @"push button";
    return [button.cell showsStateBy] != NSNoCellMask ? @"check box" : nil;
  }
  if ([view isKindOfClass:[NSTextField class]]) return @"label";
  return nil;
}

NSString* titleOf(NSView* view, NSString* kind) {
  if ([kind isEqualToString:@"label"]) return static_cast<NSTextField*>(view).stringValue;
  return [kind hasSuffix:@"k box"] || [kind isEqualToString:@"push button"] ? static_cast<NSButton*>(view).title : @"";
}

NSDictionary* describedControl(NSView* view, NSString* kind) {
  NSControl* const control = static_cast<NSControl*>(view);
  const bool isOn = [kind isEqualToString:@"check box"] && static_cast<NSButton*>(view).state == NSControlStateValueOn;
  NSString* const label = view.accessibilityLabel;
  return @{
    @"role" : kind,
    @"title" : titleOf(view, kind),
    @"label" : label != nil ? label : @"",
    @"frame" : frameOf(view),
    @"enabled" : @(control.isEnabled),
    @"on" : @(isOn),
    @"hasFocus" : @(view.window.firstResponder == view)
  };
}

void collectControls(NSView* view, NSMutableArray* controls) {
  for (NSView* child in view.subviews) {
    if (kindOf(child) != nil)
      [controls addObject:child];
    else
      collectControls(child, controls);
  }
}

NSArray* controlsOf(NSWindow* window) {
  NSMutableArray* const controls = [NSMutableArray array];
  collectControls(window.contentView, controls);
  return controls;
}

// GNUstep shows the same window for each alert.
int alerts = 0;
NSInteger (*runModal)(id, SEL);

NSInteger countAlert(id alert, SEL selector) {
  ++alerts;
  return runModal(alert, selector);
}

NSDictionary* described(NSWindow* window) {
  NSMutableArray* const controls = [NSMutableArray array];
  for (NSView* control in controlsOf(window)) [controls addObject:describedControl(control, kindOf(control))];
  return @{
    @"identity" : [NSString stringWithFormat:@"%p %d", window, alerts],
    @"title" : window.title,
    @"frame" : onScreen(window.frame),
    @"isKey" : @(window.isKeyWindow),
    @"controls" : controls
  };
}

// The windows of the program itself, without those that GNUstep shows for a menu or an icon.
NSArray* describedWindows() {
  NSMutableArray* const windows = [NSMutableArray array];
  for (NSWindow* window in NSApp.windows) {
    const bool isMenu = [window isKindOfClass:NSClassFromString(@"NSMenuPanel")];
    if (window.isVisible && !isMenu && (window.styleMask & NSTitledWindowMask) != 0)
      [windows addObject:described(window)];
  }
  return windows;
}

void postTermination(NSString* identifier) {
  id const application = [NSRunningApplication endedApplicationWithBundleIdentifier:identifier];
  [NSWorkspace.sharedWorkspace.notificationCenter postNotificationName:NSWorkspaceDidTerminateApplicationNotification
                                                                object:nil
                                                              userInfo:@{NSWorkspaceApplicationKey : application}];
}

}  // namespace

@interface RigRemoteControl : NSObject
@end

@implementation RigRemoteControl {
  int listener_;
}

// Observers are not retained, so it lives forever.
static RigRemoteControl* theControl() {
  static RigRemoteControl* const control = [[RigRemoteControl alloc] init];
  return control;
}

+ (void)load {
  if (std::getenv("QUILLERY_RIG") == nullptr) return;
  runModal = replaceMethod("NSAlert", "runModal", countAlert);
  @autoreleasepool {
    [NSNotificationCenter.defaultCenter addObserver:theControl()
                                           selector:@selector(launched:)
                                               name:NSApplicationDidFinishLaunchingNotification
                                             object:nil];
  }
}

- (void)launched:(NSNotification*)__unused notification {
  const std::string path = std::string(std::getenv("QUILLERY_RIG")) + "/control";
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  std::strncpy(address.sun_path, path.c_str(), sizeof(address.sun_path) - 1);
  unlink(path.c_str());
  listener_ = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
  if (bind(listener_, reinterpret_cast<sockaddr*>(&address), sizeof(address)) != 0 || listen(listener_, 8) != 0)
    abort();
  [NSThread detachNewThreadSelector:@selector(listen) toTarget:self withObject:nil];
}

- (void)listen {
  for (;;) {
    @autoreleasepool {
      const int connection = accept(listener_, nullptr, nullptr);
      char line[1024];
      const ssize_t length = read(connection, line, sizeof(line) - 1);
      line[length > 0 ? length : 0] = '\0';
      NSMutableArray* const exchange = [NSMutableArray arrayWithObject:[NSString stringWithUTF8String:line]];
      [self performSelectorOnMainThread:@selector(answer:) withObject:exchange waitUntilDone:YES modes:commonModes()];
      NSData* const reply = [NSJSONSerialization dataWithJSONObject:[exchange lastObject] options:0 error:nullptr];
      send(connection, reply.bytes, reply.length, MSG_NOSIGNAL);
      close(connection);
    }
  }
}

- (void)answer:(NSMutableArray*)exchange {
  NSString* const command = exchange[0];
  const NSUInteger space = [command rangeOfString:@" "].location;
  NSString* const verb = space != NSNotFound ? [command substringToIndex:space] : command;
  NSString* const rest = space != NSNotFound ? [command substringFromIndex:space + 1] : @"";
  if ([verb isEqualToString:@"menu"]) {
    [exchange addObject:describedMenu()];
  } else if ([verb isEqualToString:@"windows"]) {
    [exchange addObject:describedWindows()];
  } else {
    // What follows may show a dialog, so it begins after the reply.
    [self performSelectorOnMainThread:NSSelectorFromString([verb stringByAppendingString:@":"])
                           withObject:rest
                        waitUntilDone:NO
                                modes:commonModes()];
    [exchange addObject:@[]];
  }
}

- (void)choose:(NSString*)title {
  NSMenuItem* const item = [menu() itemWithTitle:title];
  if (item == nil || !item.isEnabled) abort();
  [NSApp sendAction:item.action to:item.target from:item];
}

- (void)press:(NSString*)place {
  NSArray* const parts = [place componentsSeparatedByString:@" "];
  for (NSWindow* window in NSApp.windows)
    if ([[NSString stringWithFormat:@"%p", window] isEqualToString:parts[0]])
      click(controlsOf(window) [[parts [1] intValue]]);
}

- (void)terminated:(NSString*)identifier {
  postTermination(identifier);
}

- (void)woke:(NSString*)__unused nothing {
  [NSWorkspace.sharedWorkspace.notificationCenter postNotificationName:NSWorkspaceDidWakeNotification object:nil];
}

- (void)reopen:(NSString*)__unused nothing {
  [[NSApp delegate] applicationShouldHandleReopen:NSApp hasVisibleWindows:NO];
}

- (void)can:(NSString*)answer {
  SPUStandardUpdaterController.last.updater.canCheckForUpdates = [answer hasSuffix:@"YES"];
}

@end
