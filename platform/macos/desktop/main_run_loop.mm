#include "platform/macos/desktop/main_run_loop.h"

#include <algorithm>
#include <optional>
#include <utility>

#include "platform/macos/conversions.h"
#include "platform/macos/desktop/callback.h"
#include "platform/macos/desktop/notification_observer.h"

namespace {

using std::chrono::milliseconds;

// How long before a date App Nap is turned off. The timer that turns it off may itself be delayed by App Nap.
constexpr NSTimeInterval leadTime = 120;

NSTimeInterval secondsOf(milliseconds span) { return std::chrono::duration<NSTimeInterval>(span).count(); }

// Schedules the first element of the queue. Only one block is scheduled at a time: the run loop dequeues all of its
// blocks at once, and a nested loop could not run those that are already dequeued.
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

// Keeps App Nap, which delays the timers of programs without a visible window, away from this process. The machine may
// still go to sleep when it is idle.
class Wakefulness {
 public:
  Wakefulness()
      : activity_([NSProcessInfo.processInfo beginActivityWithOptions:NSActivityUserInitiatedAllowingIdleSystemSleep
                                                               reason:@"A timer is due soon"]) {}
  ~Wakefulness() { [NSProcessInfo.processInfo endActivity:activity_]; }
  Wakefulness(const Wakefulness&) = delete;
  Wakefulness& operator=(const Wakefulness&) = delete;

 private:
  id<NSObject> activity_;
};

// The block of its NSTimer holds it until the timer is invalid.
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

  // The run loop stores a delay instead of an instant, so set the dates again when the clock is set.
  void followClock(NSDate* fireDate) {
    wakeBefore(fireDate);
    const std::weak_ptr<RunLoopTimer> weak = weak_from_this();
    clockObserver_ = observeNotifications(NSNotificationCenter.defaultCenter, NSSystemClockDidChangeNotification,
                                          [weak, fireDate](NSNotification*) {
                                            const auto self = weak.lock();
                                            if (!self) return;
                                            self->timer_.fireDate = fireDate;
                                            self->wakeBefore(fireDate);
                                          });
  }

  // Turns App Nap off until the timer can no longer fire.
  void stayAwake() { wakefulness_.emplace(); }

  void invalidate() override {
    const auto keepAlive = weak_from_this().lock();
    [timer_ invalidate];
    finish();
    // The handler may own this timer, so release it last. While it runs, `fire` holds it.
    const TimerHandler released = std::exchange(handler_, nullptr);
  }

  bool isValid() const override { return timer_ != nil; }

 private:
  void fire() {
    if (!handler_) return;  // the handler is running
    const auto keepAlive = shared_from_this();
    // A moved-from function may keep its target, so exchange it: an empty one means that the handler is running.
    TimerHandler handler = std::exchange(handler_, nullptr);
    if (!repeats_) finish();
    callBack(handler, *this);
    if (isValid()) handler_ = std::move(handler);
  }

  // Turns App Nap off shortly before the date, or soon if that moment has passed.
  void wakeBefore(NSDate* fireDate) {
    letNap();
    const std::weak_ptr<RunLoopTimer> weak = weak_from_this();
    leadTimer_ = [[NSTimer alloc] initWithFireDate:[fireDate dateByAddingTimeInterval:-leadTime]
                                          interval:0
                                           repeats:NO
                                             block:^(NSTimer*) {
                                               if (const auto self = weak.lock()) self->stayAwake();
                                             }];
    [NSRunLoop.mainRunLoop addTimer:leadTimer_ forMode:NSRunLoopCommonModes];
  }

  void letNap() {
    [leadTimer_ invalidate];
    leadTimer_ = nil;
    wakefulness_.reset();
  }

  void finish() {
    timer_ = nil;  // its block holds this object
    clockObserver_ = nullptr;
    letNap();
  }

  TimerHandler handler_;
  bool repeats_;
  NSTimer* timer_ = nil;
  NSTimer* leadTimer_ = nil;  // only of a timer that fires at a date
  std::optional<Wakefulness> wakefulness_;
  Observation clockObserver_;
};

}  // namespace

Instant MainRunLoop::now() { return systemTime(); }

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
  timer->stayAwake();
  return timer;
}
