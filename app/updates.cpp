// Updates of the program itself: the two menu items, the reminder of an available update, and the relaunch, which waits
// for a sort in progress while no new sort may start.
#include <utility>

#include "app/sorter_delegate.h"
#include "platform/platform.h"

namespace {

constexpr const char* reminderToolTip = "Quillery — update available";
constexpr const char* reminderTitle = "Update Available…";

}  // namespace

void SorterDelegate::observeUpdates() {
  automaticUpdateMenuItem->setOn(updaterController->automaticallyChecksForUpdates());
  updateObservation = updaterController->observeCanCheckForUpdates([weak = weak_from_this()] {
    if (const auto self = weak.lock()) self->updateMenuItem->setEnabled(self->updaterController->canCheckForUpdates());
  });
}

void SorterDelegate::checkForUpdates() { updaterController->checkForUpdates(); }

void SorterDelegate::toggleAutomaticUpdates() {
  updaterController->setAutomaticallyChecksForUpdates(!updaterController->automaticallyChecksForUpdates());
  automaticUpdateMenuItem->setOn(updaterController->automaticallyChecksForUpdates());
}

bool SorterDelegate::supportsGentleScheduledUpdateReminders() const { return true; }

bool SorterDelegate::standardUserDriverShouldHandleShowingScheduledUpdate(bool /*inImmediateFocus*/) { return false; }

void SorterDelegate::standardUserDriverWillHandleShowingUpdate(bool isUserInitiated) {
  if (isUserInitiated) return;
  item->setAppearsDisabled(false);
  item->setToolTip(toolTip_ = reminderToolTip);
  updateMenuItem->setTitle(reminderTitle);
}

void SorterDelegate::standardUserDriverDidReceiveUserAttention() { clearUpdateReminder(); }

void SorterDelegate::clearUpdateReminder() {
  item->setToolTip(toolTip_ = normalToolTip);
  updateMenuItem->setTitle(normalUpdateTitle);
}

void SorterDelegate::standardUserDriverWillFinishUpdateSession() {
  clearUpdateReminder();
  updateInstallPending = false;
  if (updateWaitTimer) updateWaitTimer->invalidate();
  updateWaitTimer = nullptr;
}

bool SorterDelegate::shouldPostponeRelaunch(Work install) {
  updateInstallPending = true;
  if (!busy) return false;
  const auto wait = [weak = weak_from_this(), install = std::move(install)](Timer& timer) {
    const auto self = weak.lock();
    if (self && self->busy) return;
    timer.invalidate();
    if (!self) return;
    self->updateWaitTimer = nullptr;
    install();
  };
  updateWaitTimer = desktop().mainLoop.repeatingTimer(updatePollInterval, wait);
  return true;
}
