// The setup that follows every launch: the place of installation, access to the bookmarks, login agent and schedule.
#include "app/alert.h"
#include "app/bookmark_permission_controller.h"
#include "app/disk_image.h"
#include "app/login_agent.h"
#include "app/sorter_delegate.h"
#include "platform/platform.h"

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
  try {
    registerBackgroundJob();
  } catch (const Error& error) {
    alert("Login setup failed", error.description());
  }
  if (enabled) scheduleDaily();
}
