#include "platform/linux/session/clock_timers.h"

#include <sys/timerfd.h>
#include <unistd.h>

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

}  // namespace

class ClockTimers::QueuedTimer : public Timer, public std::enable_shared_from_this<QueuedTimer> {
 public:
  QueuedTimer(ClockTimers& timers, std::optional<ClockTime> interval, TimerHandler handler)
      : timers_(&timers), interval_(interval), handler_(std::move(handler)) {}

  void invalidate() override {
    const std::shared_ptr<QueuedTimer> thisLives = weak_from_this().lock();
    leaveQueue();
    timers_ = nullptr;
    // What it holds may well hold the timer. While it runs it is not here, but with `fire`.
    const TimerHandler released = std::exchange(handler_, nullptr);
  }

  bool isValid() const override { return timers_ != nullptr; }

  void queuedAt(Queue::iterator place) { place_ = place; }

  void leaveQueue() {
    if (place_) timers_->remove(*std::exchange(place_, std::nullopt));
  }

  // Runs the handler of a timer that was due then. It is out of the queue meanwhile, so it cannot fire again inside.
  void fire(ClockTime due) {
    const std::optional<ClockTime> next =
        interval_ ? std::optional(timers_->nextAfterNow(due, *interval_)) : std::nullopt;
    TimerHandler handler = std::move(handler_);
    if (!interval_) timers_ = nullptr;
    handler(*this);
    if (timers_ == nullptr) return;
    handler_ = std::move(handler);
    timers_->enqueue(*next, shared_from_this());
  }

 private:
  ClockTimers* timers_;  // null once it cannot fire any more
  std::optional<ClockTime> interval_;
  TimerHandler handler_;
  std::optional<Queue::iterator> place_;  // absent while it is not queued
};

ClockTimers::Descriptor::Descriptor(clockid_t clock) : number_(timerfd_create(clock, TFD_NONBLOCK | TFD_CLOEXEC)) {
  if (number_ < 0)
    throw Error("POSIX", errno,
                "No timer could be made because the system answered “" + std::generic_category().message(errno) + "”.");
}

ClockTimers::Descriptor::~Descriptor() { close(number_); }

ClockTimers::ClockTimers(clockid_t clock)
    : clock_(clock), descriptor_(clock), notifier_(descriptor_, QSocketNotifier::Read) {
  QObject::connect(&notifier_, &QSocketNotifier::activated, &notifier_, [this]() noexcept { fireNext(); });
}

ClockTimers::~ClockTimers() {
  while (!queue_.empty()) queue_.begin()->second->invalidate();
}

ClockTimers::ClockTime ClockTimers::now() const {
  timespec time{};
  clock_gettime(clock_, &time);
  return std::chrono::seconds(time.tv_sec) + nanoseconds(time.tv_nsec);
}

std::shared_ptr<Timer> ClockTimers::at(ClockTime due, TimerHandler handler) {
  return enqueue(due, std::make_shared<QueuedTimer>(*this, std::nullopt, std::move(handler)));
}

std::shared_ptr<Timer> ClockTimers::after(milliseconds delay, TimerHandler handler) {
  return at(saturatingSum(now(), saturated(delay)), std::move(handler));
}

std::shared_ptr<Timer> ClockTimers::every(milliseconds interval, TimerHandler handler) {
  const ClockTime span = saturated(std::max(interval, milliseconds(1)));
  return enqueue(saturatingSum(now(), span), std::make_shared<QueuedTimer>(*this, span, std::move(handler)));
}

std::shared_ptr<Timer> ClockTimers::enqueue(ClockTime due, std::shared_ptr<QueuedTimer> timer) {
  const auto place = queue_.emplace(due, std::move(timer));
  place->second->queuedAt(place);
  arm();
  return place->second;
}

// The first of the times that lie whole intervals after `due` which is still to come.
ClockTimers::ClockTime ClockTimers::nextAfterNow(ClockTime due, ClockTime interval) const {
  return saturatingSum(due + (now() - due) / interval * interval, interval);
}

void ClockTimers::remove(Queue::iterator place) {
  queue_.erase(place);
  arm();
}

// Setting it anew also takes back what the descriptor had to tell.
void ClockTimers::arm() const {
  itimerspec setting{};  // all zero: never
  if (!queue_.empty()) {
    const ClockTime due = std::max(queue_.begin()->first, ClockTime(1));  // the kernel knows no time before its clock's
    const auto seconds = std::chrono::floor<std::chrono::seconds>(due);
    setting.it_value = {.tv_sec = seconds.count(), .tv_nsec = (due - seconds).count()};
  }
  timerfd_settime(descriptor_, TFD_TIMER_ABSTIME, &setting, nullptr);
}

void ClockTimers::fireNext() noexcept {
  const auto first = queue_.begin();
  if (first == queue_.end() || first->first > now()) return arm();  // the clock was set back once the kernel had told
  const auto [due, timer] = *first;
  timer->leaveQueue();  // which arms the clock for the others: they may fire in a loop that the handler runs
  timer->fire(due);
}
