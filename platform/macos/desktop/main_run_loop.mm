#include "platform/macos/desktop/main_run_loop.h"

#include <algorithm>
#include <utility>

#include "platform/macos/conversions.h"
#include "platform/macos/desktop/callback.h"
#include "platform/macos/desktop/notification_observer.h"

namespace {

using std::chrono::milliseconds;

NSTimeInterval secondsOf(milliseconds span) { return std::chrono::duration<NSTimeInterval>(span).count(); }

// The run loop takes all blocks that wait at once, and what a nested loop is to run must not be among them. So only one
// waits there at a time.
void runNextSoon(const std::shared_ptr<std::deque<Work>>& posted) {
  const auto waiting = posted;
  [NSRunLoop.mainRunLoop performInModes:@[ NSRunLoopCommonModes ]
                                  block:^{
                                    const Work work = std::move(waiting->front());
                                    waiting->pop_front();
                                    if (!waiting->empty()) runNextSoon(waiting);
                                    callBack(work);
                                  }];
}

// Held by the run loop until it is done.
class RunLoopTimer : public Timer, public std::enable_shared_from_this<RunLoopTimer> {
 public:
  RunLoopTimer(TimerHandler handler, bool repeats) : handler_(std::move(handler)), repeats_(repeats) {}

  void start(NSDate* fireDate, NSTimeInterval interval) {
    const auto self = shared_from_this();
    timer_ = [[NSTimer alloc] initWithFireDate:fireDate
                                      interval:interval
                                       repeats:repeats_
                                         block:^(NSTimer*) {
                                           self->fire();
                                         }];
    [NSRunLoop.mainRunLoop addTimer:timer_ forMode:NSRunLoopCommonModes];
  }

  // The run loop keeps how long it is to wait, not until when.
  void followClock(NSDate* fireDate) {
    const std::weak_ptr<RunLoopTimer> weak = weak_from_this();
    clockObserver_ = observeNotifications(NSNotificationCenter.defaultCenter, NSSystemClockDidChangeNotification,
                                          [weak, fireDate](NSNotification*) {
                                            if (const auto self = weak.lock()) self->timer_.fireDate = fireDate;
                                          });
  }

  void invalidate() override {
    const auto thisLives = weak_from_this().lock();
    [timer_ invalidate];
    finish();
    // What it holds may well hold the timer. While it runs it is not here, but with `fire`.
    const TimerHandler released = std::exchange(handler_, nullptr);
  }

  bool isValid() const override { return timer_ != nil; }

 private:
  void fire() {
    if (!handler_) return;  // it runs already
    const auto thisLives = shared_from_this();
    TimerHandler handler = std::move(handler_);
    if (!repeats_) finish();
    callBack(handler, *this);
    if (isValid()) handler_ = std::move(handler);
  }

  void finish() {
    timer_ = nil;  // whose block holds this
    clockObserver_ = nullptr;
  }

  TimerHandler handler_;
  bool repeats_;
  NSTimer* timer_ = nil;
  Observation clockObserver_;
};

}  // namespace

Instant MainRunLoop::now() { return std::chrono::system_clock::now(); }

void MainRunLoop::post(Work work) {
  posted_->push_back(std::move(work));
  if (posted_->size() == 1) runNextSoon(posted_);
}

void MainRunLoop::after(milliseconds delay, Work work) {
  const auto once = [work = std::move(work)](Timer&) { work(); };
  std::make_shared<RunLoopTimer>(once, false)->start([NSDate dateWithTimeIntervalSinceNow:secondsOf(delay)], 0);
}

std::shared_ptr<Timer> MainRunLoop::timerAt(Instant fireDate, TimerHandler handler) {
  const auto timer = std::make_shared<RunLoopTimer>(std::move(handler), false);
  timer->start(dateOf(fireDate), 0);
  timer->followClock(dateOf(fireDate));
  return timer;
}

std::shared_ptr<Timer> MainRunLoop::repeatingTimer(milliseconds interval, TimerHandler handler) {
  const NSTimeInterval span = secondsOf(std::max(interval, milliseconds(1)));
  const auto timer = std::make_shared<RunLoopTimer>(std::move(handler), true);
  timer->start([NSDate dateWithTimeIntervalSinceNow:span], span);
  return timer;
}
