// Whether automatic sorting is on, and the line of the menu that says so.
#include "app/alert.h"
#include "app/probes.h"
#include "app/sorter_delegate.h"
#include "engine/sort_job.h"
#include "platform/platform.h"

SorterDelegate::SorterDelegate() : enabled(!sortingIsPaused()) {}

void SorterDelegate::start() {
  if (!canReadBookmarks()) {
    pauseForAccess();
    return;
  }
  needsAccess = false;
  noteAccessGranted();
  enabled = true;
  platform().userDefaults.set(sortingPausedKey, false);
  refresh();
  scheduleDaily();
}

void SorterDelegate::stop() {
  enabled = false;
  if (dailyTimer) dailyTimer->invalidate();
  platform().userDefaults.set(sortingPausedKey, true);
  refresh();
}

void SorterDelegate::toggleRunning() {
  if (enabled) {
    stop();
  } else {
    start();
  }
}

void SorterDelegate::refresh() {
  status->setTitle(needsAccess ? "Full Disk Access Required — Start" : enabled ? "Running — Stop" : "Stopped — Start");
  status->setEnabled(true);
  item->menu()->setAutoenablesItems(false);
}

void SorterDelegate::pauseForAccess() {
  needsAccess = true;
  enabled = false;
  if (dailyTimer) dailyTimer->invalidate();
  refresh();
}

void SorterDelegate::tick() {
  if (!enabled || busy || updateInstallPending) return;
  if (!canReadBookmarks()) {
    pauseForAccess();
    return;
  }
  busy = true;
  automatic = true;
  performSort();
  busy = false;
  automatic = false;
}
