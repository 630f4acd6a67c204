#include "platform/macos/desktop/appkit_application.h"

#include "platform/macos/desktop/callback.h"
#include "platform/macos/desktop/main_menu.h"

// Forwards AppKit's messages to the delegate. Without a living delegate, AppKit performs its default action.
@interface ApplicationForwarder : NSObject <NSApplicationDelegate>
- (void)setDelegate:(const std::weak_ptr<ApplicationDelegate>&)delegate;
@end

@implementation ApplicationForwarder {
  std::weak_ptr<ApplicationDelegate> delegate_;
}

- (void)setDelegate:(const std::weak_ptr<ApplicationDelegate>&)delegate {
  delegate_ = delegate;
}

- (void)applicationDidFinishLaunching:(NSNotification*)__unused notification {
  callBack([&] {
    if (const auto delegate = delegate_.lock()) delegate->applicationDidFinishLaunching();
  });
}

- (NSApplicationTerminateReply)applicationShouldTerminate:(NSApplication*)__unused sender {
  return callBack([&] {
    const auto delegate = delegate_.lock();
    return !delegate || delegate->applicationShouldTerminate() ? NSTerminateNow : NSTerminateCancel;
  });
}

// Nothing is restored. Without this answer, AppKit writes a warning to the error log at each launch.
- (BOOL)applicationSupportsSecureRestorableState:(NSApplication*)__unused application {
  return YES;
}

- (BOOL)applicationShouldHandleReopen:(NSApplication*)__unused sender hasVisibleWindows:(BOOL)hasVisibleWindows {
  return callBack([&] {
    const auto delegate = delegate_.lock();
    return !delegate || delegate->applicationShouldHandleReopen(hasVisibleWindows);
  });
}

@end

AppKitApplication::AppKitApplication() : forwarder_([[ApplicationForwarder alloc] init]) {
  application_.delegate = forwarder_;
  application_.mainMenu = mainMenu();
}

void AppKitApplication::setDelegate(const std::weak_ptr<ApplicationDelegate>& delegate) {
  [forwarder_ setDelegate:delegate];
}

void AppKitApplication::run() { [application_ run]; }

void AppKitApplication::terminate() { [application_ terminate:nil]; }
