// Timers that go by one of the kernel's clocks.
#pragma once

#include <QSocketNotifier>
#include <chrono>
#include <ctime>
#include <functional>
#include <map>
#include <memory>

#include "platform/main_loop.h"

// All timers of a clock share one descriptor, armed for the earliest of them, so that they fire in the order in which
// they are due however late the event loop comes to it. One fires in each turn of the loop, nested loops included.
//
// The kernel compares with the clock itself: a clock that is set forward, or a machine that wakes, makes a timer due at
// once, and a clock that is set backward puts it off.
class ClockTimers {
 public:
  // Since the clock's own beginning.
  using ClockTime = std::chrono::nanoseconds;

  // Throws Error if the system gives no descriptor. There must be a QCoreApplication.
  explicit ClockTimers(clockid_t clock);
  // Invalidates all timers. Not to be called by one of their handlers.
  ~ClockTimers();
  ClockTimers(const ClockTimers&) = delete;
  ClockTimers& operator=(const ClockTimers&) = delete;

  // A timer that fires once, when the clock reaches `due`; in the loop's next turn if it has.
  std::shared_ptr<Timer> at(ClockTime due, TimerHandler handler);

  // A timer that fires once, this much later; in the loop's next turn if that is not positive.
  std::shared_ptr<Timer> after(std::chrono::milliseconds delay, TimerHandler handler);

  // A timer that fires at every multiple of `interval` from now. Those that it is late for, because the loop was busy
  // or its own handler ran, come to one, at once. An interval below a millisecond is taken for one.
  std::shared_ptr<Timer> every(std::chrono::milliseconds interval, TimerHandler handler);

 private:
  class QueuedTimer;
  using Queue = std::multimap<ClockTime, std::shared_ptr<QueuedTimer>>;

  class Descriptor {
   public:
    explicit Descriptor(clockid_t clock);
    ~Descriptor();
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    operator int() const { return number_; }  // NOLINT(google-explicit-constructor): it is one

   private:
    int number_;
  };

  ClockTime now() const;
  ClockTime nextAfterNow(ClockTime due, ClockTime interval) const;
  std::shared_ptr<Timer> enqueue(ClockTime due, std::shared_ptr<QueuedTimer> timer);
  void remove(Queue::iterator place);
  void arm() const;
  void fireNext() noexcept;

  clockid_t clock_;
  Descriptor descriptor_;
  Queue queue_;
  QSocketNotifier notifier_;
};
