// The platform of macOS with a desktop.
#import <CoreGraphics/CoreGraphics.h>

#include "platform/macos/desktop/appkit_application.h"
#include "platform/macos/desktop/appkit_screen.h"
#include "platform/macos/desktop/appkit_user_interface.h"
#include "platform/macos/desktop/appkit_workspace.h"
#include "platform/macos/desktop/main_run_loop.h"
#include "platform/macos/desktop/sparkle_updater.h"
#include "platform/macos/objective_c.h"
#include "platform/platform.h"

namespace {

// Without a screen AppKit would crash the process.
void requireScreen() {
  NSDictionary* const session = (__bridge_transfer NSDictionary*)CGSessionCopyCurrentDictionary();
  if (session == nil) throw Error("Desktop", 1, "There is no desktop to run on: nobody is logged in at a screen.");
}

class NativeDesktop {
 public:
  explicit NativeDesktop(const Platform& screenless)
      : platform_{screenless.propertyLists,
                  screenless.fileSystem,
                  screenless.runningApplications,
                  screenless.calendars,
                  screenless.collation,
                  userInterface_,
                  screenless.bundle,
                  screenless.processes,
                  screenless.userDefaults,
                  &desktop_} {}

  const Platform& platform() const { return platform_; }

 private:
  AppKitApplication application_;
  MainRunLoop mainLoop_;
  AppKitWorkspace workspace_;
  AppKitScreen screen_;
  AppKitUserInterface userInterface_;
  SparkleUpdater updater_;
  const Desktop desktop_{application_, mainLoop_, workspace_, screen_, updater_};
  const Platform platform_;
};

}  // namespace

const Platform& nativeDesktopPlatform() {
  requireScreen();
  // Never destroyed, because AppKit ends the process inside the application's loop, which still uses it.
  static const auto* const desktop = new NativeDesktop(nativePlatform());
  return desktop->platform();
}
