// Timers on one of the kernel's clocks.
#pragma once

#include <chrono>
#include <ctime>
#include <map>
#include <memory>

#include "platform/linux/session/event_loop.h"
#include "platform/main_loop.h"
#include "platform/posix/file_descriptor.h"

// All timers of a clock share one descriptor, armed for the earliest of them, so they fire in the order of their due
// times however busy the event loop is. At most one fires in each turn of the loop, nested loops included.
//
// The kernel compares due times with the clock itself: a timer is due at once if the clock is set forward or the
// machine wakes, and is postponed if the clock is set backward.
class ClockTimers {
 public:
  // Since the clock's own epoch.
  using ClockTime = std::chrono::nanoseconds;

  // The loop must outlive it. Throws Error if the system creates no timer.
  ClockTimers(EventLoop& loop, clockid_t clock);
  // Invalidates all timers. A timer's handler may not destroy this.
  ~ClockTimers();
  ClockTimers(const ClockTimers&) = delete;
  ClockTimers& operator=(const ClockTimers&) = delete;

  // A timer that fires once, when the clock reaches `due`, or in the loop's next turn if it already has.
  std::shared_ptr<Timer> at(ClockTime due, TimerHandler handler);

  // A timer that fires once, after the delay, or in the loop's next turn if the delay is not positive.
  std::shared_ptr<Timer> after(std::chrono::milliseconds delay, TimerHandler handler);

  // A timer that fires at every multiple of `interval` from now. Firings missed because the loop was busy or the
  // handler was running are made up for by one, at once. The shortest interval is 1 ms.
  std::shared_ptr<Timer> every(std::chrono::milliseconds interval, TimerHandler handler);

 private:
  class ClockTimer;
  using TimerQueue = std::multimap<ClockTime, std::shared_ptr<ClockTimer>>;

  ClockTime now() const;
  ClockTime nextAfterNow(ClockTime due, ClockTime interval) const;
  std::shared_ptr<Timer> enqueue(ClockTime due, std::shared_ptr<ClockTimer> timer);
  void remove(TimerQueue::iterator place);
  void arm() const;
  void fireNext() noexcept;

  clockid_t clock_;
  FileDescriptor descriptor_;
  TimerQueue queue_;
  std::unique_ptr<DescriptorWatch> watch_;
};
