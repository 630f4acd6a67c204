#include "platform/linux/session/clock_timers.h"

#include <sys/timerfd.h>

#include <algorithm>
#include <cerrno>
#include <optional>
#include <system_error>
#include <utility>

#include "platform/error.h"

namespace {

using std::chrono::milliseconds;
using std::chrono::nanoseconds;

nanoseconds saturated(milliseconds span) {
  constexpr auto longest = std::chrono::floor<milliseconds>(nanoseconds::max());
  return std::clamp(span, milliseconds::zero(), longest);
}

nanoseconds saturatingSum(nanoseconds time, nanoseconds more) {
  return time > nanoseconds::max() - more ? nanoseconds::max() : time + more;
}

FileDescriptor createTimer(clockid_t clock) {
  FileDescriptor descriptor(timerfd_create(clock, TFD_NONBLOCK | TFD_CLOEXEC));
  if (!descriptor.isOpen())
    throw Error("POSIX", errno, "A timer couldn’t be created: " + std::generic_category().message(errno) + ".");
  return descriptor;
}

}  // namespace

class ClockTimers::ClockTimer : public Timer, public std::enable_shared_from_this<ClockTimer> {
 public:
  ClockTimer(ClockTimers& timers, std::optional<ClockTime> interval, TimerHandler handler)
      : timers_(&timers), interval_(interval), handler_(std::move(handler)) {}

  void invalidate() override {
    const std::shared_ptr<ClockTimer> thisLives = weak_from_this().lock();
    leaveQueue();
    timers_ = nullptr;
    // The handler may own this timer, so release it last. While it runs, `fire` holds it.
    const TimerHandler released = std::exchange(handler_, nullptr);
  }

  bool isValid() const override { return timers_ != nullptr; }

  void queuedAt(TimerQueue::iterator place) { place_ = place; }

  void leaveQueue() {
    if (place_) timers_->remove(*std::exchange(place_, std::nullopt));
  }

  // Runs the handler. The timer is not queued meanwhile, so it cannot fire in a loop nested in the handler.
  void fire(ClockTime due) {
    const std::optional<ClockTime> next =
        interval_ ? std::optional(timers_->nextAfterNow(due, *interval_)) : std::nullopt;
    // A moved-from function may keep its target, so exchange it. Otherwise a timer that its own handler owns would
    // never be freed.
    TimerHandler handler = std::exchange(handler_, nullptr);
    if (!interval_) timers_ = nullptr;
    handler(*this);
    if (timers_ == nullptr) return;
    handler_ = std::move(handler);
    timers_->enqueue(*next, shared_from_this());
  }

 private:
  ClockTimers* timers_;  // null once it cannot fire again
  std::optional<ClockTime> interval_;
  TimerHandler handler_;
  std::optional<TimerQueue::iterator> place_;  // absent while it is not queued
};

ClockTimers::ClockTimers(EventLoop& loop, clockid_t clock)
    : clock_(clock),
      descriptor_(createTimer(clock)),
      watch_(loop.watch(descriptor_.get(), Readiness::readable, [this]() noexcept { fireNext(); })) {}

ClockTimers::~ClockTimers() {
  while (!queue_.empty()) queue_.begin()->second->invalidate();
}

ClockTimers::ClockTime ClockTimers::now() const {
  timespec time{};
  clock_gettime(clock_, &time);
  return std::chrono::seconds(time.tv_sec) + nanoseconds(time.tv_nsec);
}

std::shared_ptr<Timer> ClockTimers::at(ClockTime due, TimerHandler handler) {
  return enqueue(due, std::make_shared<ClockTimer>(*this, std::nullopt, std::move(handler)));
}

std::shared_ptr<Timer> ClockTimers::after(milliseconds delay, TimerHandler handler) {
  return at(saturatingSum(now(), saturated(delay)), std::move(handler));
}

std::shared_ptr<Timer> ClockTimers::every(milliseconds interval, TimerHandler handler) {
  const ClockTime span = saturated(std::max(interval, milliseconds(1)));
  return enqueue(saturatingSum(now(), span), std::make_shared<ClockTimer>(*this, span, std::move(handler)));
}

std::shared_ptr<Timer> ClockTimers::enqueue(ClockTime due, std::shared_ptr<ClockTimer> timer) {
  const auto place = queue_.emplace(due, std::move(timer));
  place->second->queuedAt(place);
  arm();
  return place->second;
}

// Returns the first time after now that is a multiple of `interval` after `due`.
ClockTimers::ClockTime ClockTimers::nextAfterNow(ClockTime due, ClockTime interval) const {
  return saturatingSum(due + (now() - due) / interval * interval, interval);
}

void ClockTimers::remove(TimerQueue::iterator place) {
  queue_.erase(place);
  arm();
}

// Setting the timer also makes the descriptor unreadable until it expires.
void ClockTimers::arm() const {
  itimerspec setting{};  // all zero: never
  if (!queue_.empty()) {
    const ClockTime due =
        std::max(queue_.begin()->first, ClockTime(1));  // the kernel accepts no time before the clock's epoch
    const auto seconds = std::chrono::floor<std::chrono::seconds>(due);
    setting.it_value = {.tv_sec = seconds.count(), .tv_nsec = (due - seconds).count()};
  }
  timerfd_settime(descriptor_.get(), TFD_TIMER_ABSTIME, &setting, nullptr);
}

void ClockTimers::fireNext() noexcept {
  const auto first = queue_.begin();
  if (first == queue_.end() || first->first > now()) return arm();  // the clock was set back after the timer expired
  const auto [due, timer] = *first;
  timer->leaveQueue();  // arms the descriptor for the next timer, which may fire in a loop nested in the handler
  timer->fire(due);
}
