// Time and waiting work by Qt's event loop.
#pragma once

#include <QEvent>
#include <QObject>
#include <chrono>
#include <memory>

#include "platform/linux/session/clock_timers.h"
#include "platform/main_loop.h"

// Runs nothing by itself: the application's event loop does, and whatever loop a dialog or a menu nests in it. There
// must be a QCoreApplication before it and for as long as it lives; all is to be called on its thread.
//
// Work and handlers must not throw, since nobody below them could report it: an exception that leaves one ends the
// process. What still waits when the loop is destroyed is dropped, and its timers are no longer valid; none of them may
// destroy the loop.
class QtMainLoop : public MainLoop {
 public:
  // Throws Error if the system gives no timers.
  QtMainLoop() = default;

  Instant now() override;

  void post(Work work) override;

  // Goes by a clock that neither jumps nor runs while the machine sleeps. Work that falls due at different times runs
  // in that order, however late. A negative delay is none.
  void after(std::chrono::milliseconds delay, Work work) override;

  // Goes by the clock on the wall even if it is set: forward past `fireDate`, and it fires at once; backward, and it
  // waits for the same instant anew.
  std::shared_ptr<Timer> timerAt(Instant fireDate, TimerHandler handler) override;

  // Goes by the same clock as `after`. Firings keep to multiples of the interval from now: being late does not add up.
  // One that falls due while the handler still runs is overdue when it returns. An interval below a millisecond is one.
  std::shared_ptr<Timer> repeatingTimer(std::chrono::milliseconds interval, TimerHandler handler) override;

 private:
  ClockTimers wallClock_{CLOCK_REALTIME};
  ClockTimers steadyClock_{CLOCK_MONOTONIC};
  // Receives posted work, which goes with it.
  class Worker : public QObject {
   public:
    bool event(QEvent* event) noexcept override;
  };

  Worker worker_;
};
