// The setup that follows every launch: the place of installation, access to the bookmarks, login agent and schedule.
#include <iostream>

#include "app/alert.h"
#include "app/bookmark_permission_controller.h"
#include "app/disk_image.h"
#include "app/login_agent.h"
#include "app/sorter_delegate.h"
#include "platform/platform.h"
#include "values/log_line.h"

namespace {

// A login agent must not name a program in a folder in which somebody builds.
void startAtLogin() {
  if (!platform().bundle.isInstalled()) {
    logLine(std::cerr, "quillery: it is not installed, so it will not start at login");
    return;
  }
  try {
    registerBackgroundJob();
  } catch (const Error& error) {
    alert("Login setup failed", error.description());
  }
}

}  // namespace

void SorterDelegate::setUp() {
  if (runsFromDiskImage()) {
    alert("Install the app first", "Drag the app into Applications, then open the installed copy.");
    desktop().application.terminate();
    return;
  }
  BookmarkPermissionController::shared()->check(
      [self = shared_from_this()](bool isGranted) { self->accessWasChecked(isGranted); });
}

void SorterDelegate::accessWasChecked(bool isGranted) {
  if (!isGranted) {
    pauseForAccess();
    return;
  }
  startAtLogin();
  if (enabled) scheduleDaily();
}
