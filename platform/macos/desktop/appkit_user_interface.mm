#include "platform/macos/desktop/appkit_user_interface.h"

#import <AppKit/AppKit.h>

#include <algorithm>

#include "platform/macos/conversions.h"
#include "platform/macos/desktop/appkit_window.h"

void AppKitUserInterface::becomeAccessory() {
  [NSApplication.sharedApplication setActivationPolicy:NSApplicationActivationPolicyAccessory];
}

void AppKitUserInterface::activateIgnoringOthers() { [NSApplication.sharedApplication activateIgnoringOtherApps:YES]; }

std::size_t AppKitUserInterface::runModal(const Alert& alert) {
  NSAlert* const dialog = [[NSAlert alloc] init];
  dialog.messageText = stringOf(alert.messageText);
  dialog.informativeText = stringOf(alert.informativeText);
  for (const std::string& button : alert.buttons) [dialog addButtonWithTitle:stringOf(button)];
  openOnCurrentSpace(dialog.window);
  // By default, AppKit refuses to terminate while a window is modal, without asking the delegate: logging out, the quit
  // by System Settings after a change of access, and a relaunch by the updater would all fail.
  dialog.window.preventsApplicationTerminationWhenModal = NO;
  // runModal shows the window, and this runs in its loop: an inactive application's window may be behind others.
  NSWindow* const window = dialog.window;
  [NSRunLoop.mainRunLoop performInModes:@[ NSRunLoopCommonModes ]
                                  block:^{
                                    [window orderFrontRegardless];
                                  }];
  const NSModalResponse response = [dialog runModal];
  const std::size_t last = std::max<std::size_t>(alert.buttons.size(), 1) - 1;
  if (response < NSAlertFirstButtonReturn) return last;
  return std::min(static_cast<std::size_t>(response - NSAlertFirstButtonReturn), last);
}
