// An update relaunches the program; a sort in progress comes first, and no other may begin.
#include <utility>

#include "app/sorter_delegate.h"
#include "platform/platform.h"

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

void SorterDelegate::standardUserDriverWillFinishUpdateSession() {
  updateInstallPending = false;
  if (updateWaitTimer) updateWaitTimer->invalidate();
  updateWaitTimer = nullptr;
}
