// Time, and work that waits for it. Everything here runs on the main thread, also inside the nested loop of a modal
// dialog or an open menu.
#pragma once

#include <chrono>
#include <functional>
#include <memory>

#include "platform/calendar.h"

using Work = std::function<void()>;

// The main loop holds a timer until it is done, so that giving up the last reference to one does not stop it.
class Timer {
 public:
  virtual ~Timer() = default;

  // Keeps it from ever firing again. May be called at any time, from its own handler too, and more than once.
  virtual void invalidate() = 0;

  // Whether it may still fire: not once it was invalidated, nor once a one-shot timer's handler has begun.
  virtual bool isValid() const = 0;
};

// What a timer does when it fires; it is handed the timer itself.
using TimerHandler = std::function<void(Timer&)>;

class MainLoop {
 public:
  virtual ~MainLoop() = default;

  // The clock on the wall: what timers at an instant go by.
  virtual Instant now() = 0;

  // Runs `work` after what is running now and what was posted before.
  virtual void post(Work work) = 0;

  // Runs `work` once, this much later.
  virtual void after(std::chrono::milliseconds delay, Work work) = 0;

  // Fires once, when the clock on the wall reaches `fireDate`: at once if it has, and late if the machine slept
  // through it or the main thread was busy.
  virtual std::shared_ptr<Timer> timerAt(Instant fireDate, TimerHandler handler) = 0;

  // Fires every `interval` from now on. A firing that is overdue is made once, however many were missed; a timer does
  // not fire while its own handler runs.
  virtual std::shared_ptr<Timer> repeatingTimer(std::chrono::milliseconds interval, TimerHandler handler) = 0;
};
