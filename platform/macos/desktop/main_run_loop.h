// Time and waiting work by the main thread's run loop.
#pragma once

#include <deque>
#include <memory>

#include "platform/main_loop.h"

// Everything runs in the common modes, which are also those of a modal dialog and an open menu. The main dispatch queue
// would not do: what is posted there waits for as long as something posted there shows a dialog.
//
// Work and handlers must not throw; see callBack.
class MainRunLoop : public MainLoop {
 public:
  Instant now() override;

  void post(Work work) override;

  // Goes by a clock that neither jumps nor runs while the machine sleeps.
  void after(std::chrono::milliseconds delay, Work work) override;

  // Where the clock is set, it is armed anew. Sleep, through which the run loop's own clock stands still, makes it
  // late.
  std::shared_ptr<Timer> timerAt(Instant fireDate, TimerHandler handler) override;

  // An interval below a millisecond is one.
  std::shared_ptr<Timer> repeatingTimer(std::chrono::milliseconds interval, TimerHandler handler) override;

 private:
  std::shared_ptr<std::deque<Work>> posted_ = std::make_shared<std::deque<Work>>();
};
