// The main loop, through the main thread's run loop.
#pragma once

#include <deque>
#include <memory>

#include "platform/main_loop.h"

// Everything runs in the common modes, which include the modes of a modal dialog and an open menu. Does not use the
// main dispatch queue: while a block of that queue shows a dialog, the queue runs no other block.
//
// Work and handlers must not throw; see callBack.
class MainRunLoop : public MainLoop {
 public:
  Instant now() override;

  void post(Work work) override;

  // Uses a monotonic clock, which stops while the machine sleeps.
  void after(std::chrono::milliseconds delay, Work work) override;

  // Rearms the timer when the wall clock is set. The timer is late after sleep, because the run loop's own clock stops
  // meanwhile. App Nap is off from two minutes before the date until the timer has fired.
  std::shared_ptr<Timer> timerAt(Instant fireDate, TimerHandler handler) override;

  // The shortest interval is one millisecond. App Nap is off while the timer is valid.
  std::shared_ptr<Timer> repeatingTimer(std::chrono::milliseconds interval, TimerHandler handler) override;

 private:
  std::shared_ptr<std::deque<Work>> posted_ = std::make_shared<std::deque<Work>>();
};
