// The main loop: the clock, posted work and timers. All work and handlers run on the main thread, also inside the
// nested loop of a modal dialog or an open menu. They must not throw.
#pragma once

#include <chrono>
#include <functional>
#include <memory>

#include "platform/calendar.h"

using Work = std::function<void()>;

// The main loop holds a timer until it has fired for the last time. Releasing every other reference does not stop it.
class Timer {
 public:
  virtual ~Timer() = default;

  // Stops the timer for good. May be called at any time, also from its own handler, and more than once.
  virtual void invalidate() = 0;

  // Returns true if the timer may still fire. Returns false once it is invalidated, and for a one-shot timer from the
  // moment its handler starts.
  virtual bool isValid() const = 0;
};

// Called with the timer that fires.
using TimerHandler = std::function<void(Timer&)>;

class MainLoop {
 public:
  virtual ~MainLoop() = default;

  // Returns the time of the wall clock, which also decides when the timers of timerAt fire.
  virtual Instant now() = 0;

  // Queues `work` behind the work that is running and the work that was posted before.
  virtual void post(Work work) = 0;

  // Runs `work` once, after `delay`.
  virtual void after(std::chrono::milliseconds delay, Work work) = 0;

  // The platform may not delay timers in order to save energy, although the program shows no window most of the time:
  // the timers of the next two functions are late only if the machine is asleep or the main thread is busy.

  // Returns a one-shot timer that fires when the wall clock reaches `fireDate`. It fires at once if that instant has
  // passed.
  virtual std::shared_ptr<Timer> timerAt(Instant fireDate, TimerHandler handler) = 0;

  // Returns a timer that fires every `interval`, for the first time one interval from now. Any number of missed firings
  // count as one. The timer does not fire while its own handler runs.
  virtual std::shared_ptr<Timer> repeatingTimer(std::chrono::milliseconds interval, TimerHandler handler) = 0;
};
