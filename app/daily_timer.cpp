// The timer of the scheduled sort. Each firing arms it anew; a sort that is too late is skipped.
#include "app/sorter_delegate.h"
#include "platform/platform.h"
#include "schedule/schedule_settings.h"

void SorterDelegate::scheduleDaily() {
  if (dailyTimer) dailyTimer->invalidate();
  dailyTimer = nullptr;
  if (!enabled) return;
  MainLoop& loop = desktop().mainLoop;
  const std::optional<Instant> fireDate = nextScheduledSort(loop.now());
  if (!fireDate) return;
  dailyTimer = loop.timerAt(*fireDate, [weak = weak_from_this(), date = *fireDate](Timer&) {
    if (const auto self = weak.lock()) self->dailyTimerFired(date);
  });
}

void SorterDelegate::schedule() { scheduleDaily(); }

void SorterDelegate::dailyTimerFired(Instant fireDate) {
  if (enabled && desktop().mainLoop.now() - fireDate < latenessLimit) closeSortReopen(true);
  scheduleDaily();
}

void SorterDelegate::observeWake() {
  observers.push_back(desktop().workspace.observeWake([weak = weak_from_this()] {
    if (const auto self = weak.lock()) self->scheduleDaily();
  }));
}
