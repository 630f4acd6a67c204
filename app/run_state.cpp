// Switches automatic sorting on and off, and shows the state in the menu's status line.
#include "app/alert.h"
#include "app/flag_scope.h"
#include "app/perform_sort.h"
#include "app/sorter_delegate.h"
#include "engine/bookmark_file.h"
#include "schedule/schedule_settings.h"

SorterDelegate::SorterDelegate() : enabled(!sortingIsPaused()) {}

void SorterDelegate::start() {
  if (!canReadBookmarks()) {
    pauseForAccess();
    return;
  }
  needsAccess = false;
  storeAccessGranted();
  enabled = true;
  storeSortingPaused(false);
  refresh();
  scheduleDaily();
}

void SorterDelegate::stop() {
  enabled = false;
  if (dailyTimer) dailyTimer->invalidate();
  storeSortingPaused(true);
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
  const FlagScope sorting(busy);
  const FlagScope unattended(automatic);
  sort();
}

bool SorterDelegate::canReadBookmarks() {
  const std::optional<std::size_t> size = readableBookmarks();
  takesLong_ = size && *size >= largeFile;
  return size.has_value();
}

void SorterDelegate::sort() {
  if (!takesLong_ || !item) return performSort();
  performSort([this](bool isSorting) { showSorting(isSorting); });
}

void SorterDelegate::showSorting(bool isSorting) noexcept {
  try {
    item->setAppearsDisabled(isSorting);
    item->setToolTip(isSorting ? "Quillery — sorting…" : toolTip_);
    if (isSorting) item->display();
  } catch (const std::exception&) {  // without memory for the picture; the sort is more important
  }
}
