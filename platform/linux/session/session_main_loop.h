// The main loop of the program on any toolkit's event loop.
#pragma once

#include <chrono>
#include <memory>

#include "platform/linux/session/clock_timers.h"
#include "platform/linux/session/event_loop.h"
#include "platform/main_loop.h"

// Does not run the event loop: the toolkit does, and so do its nested loops for dialogs and menus. Everything happens
// on the thread of the event loop.
//
// Work and handlers must not throw: an exception that leaves them ends the process. Destroying this invalidates its
// timers and drops delayed work. Work and handlers may not destroy it.
class SessionMainLoop : public MainLoop {
 public:
  // The event loop must outlive it. Throws Error if the system creates no timers.
  explicit SessionMainLoop(EventLoop& eventLoop);

  Instant now() override;

  void post(Work work) override;

  // Uses a clock that neither jumps nor runs while the machine sleeps. Work with different due times runs in their
  // order, however late. A negative delay counts as zero.
  void after(std::chrono::milliseconds delay, Work work) override;

  // Follows the wall clock when it is set: forward past `fireDate`, and the timer fires at once; backward, and it fires
  // at the same instant again.
  std::shared_ptr<Timer> timerAt(Instant fireDate, TimerHandler handler) override;

  // Uses the clock of `after`. The timer fires at multiples of the interval from now, so delays do not add up. If one
  // is due while the handler still runs, the timer fires when the handler returns. The shortest interval is 1 ms.
  std::shared_ptr<Timer> repeatingTimer(std::chrono::milliseconds interval, TimerHandler handler) override;

 private:
  EventLoop& eventLoop_;
  ClockTimers wallClock_;
  ClockTimers steadyClock_;
};
