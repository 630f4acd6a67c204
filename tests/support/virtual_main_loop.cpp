#include "tests/support/virtual_main_loop.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <ctime>
#include <iomanip>
#include <sstream>
#include <stdexcept>
#include <utility>

std::string utcText(Instant instant) {
  const auto days = std::chrono::floor<std::chrono::days>(instant);
  const std::chrono::year_month_day date(days);
  const std::chrono::hh_mm_ss time(std::chrono::floor<std::chrono::seconds>(instant - days));
  std::array<char, 64> text{};
  (void)std::snprintf(text.data(), text.size(), "%04d-%02u-%02u %02d:%02d:%02d", static_cast<int>(date.year()),
                      static_cast<unsigned>(date.month()), static_cast<unsigned>(date.day()),
                      static_cast<int>(time.hours().count()), static_cast<int>(time.minutes().count()),
                      static_cast<int>(time.seconds().count()));
  return text.data();
}

Instant utc(const std::string& text) {
  std::tm fields{};
  std::istringstream stream(text);
  if (!(stream >> std::get_time(&fields, "%Y-%m-%d %H:%M:%S")))
    throw std::invalid_argument("not a date and time: " + text);
  const std::chrono::year_month_day date(std::chrono::year(fields.tm_year + 1900),
                                         std::chrono::month(static_cast<unsigned>(fields.tm_mon + 1)),
                                         std::chrono::day(static_cast<unsigned>(fields.tm_mday)));
  return std::chrono::sys_days(date) + std::chrono::hours(fields.tm_hour) + std::chrono::minutes(fields.tm_min) +
         std::chrono::seconds(fields.tm_sec);
}

class VirtualMainLoop::VirtualTimer : public Timer {
 public:
  VirtualTimer(Journal& journal, TimerHandler handler, std::string description, std::optional<Duration> interval)
      : journal_(journal), handler_(std::move(handler)), description_(std::move(description)), interval_(interval) {}

  void invalidate() override {
    if (isValid_) journal_.perform("invalidate", description_, [&] { isValid_ = false; });
    // The handler may own this timer, so release it last. While it runs, `fire` holds it.
    const TimerHandler released = std::exchange(handler_, nullptr);
  }
  bool isValid() const override { return isValid_; }

  bool isFiring() const { return isFiring_; }
  std::optional<Duration> interval() const { return interval_; }
  void fire() {
    isFiring_ = true;
    if (!interval_) isValid_ = false;
    TimerHandler handler = std::exchange(handler_, nullptr);
    handler(*this);
    isFiring_ = false;
    if (isValid_) handler_ = std::move(handler);
  }

 private:
  Journal& journal_;
  TimerHandler handler_;
  std::string description_;
  std::optional<Duration> interval_;  // absent: fires once
  bool isValid_ = true;
  bool isFiring_ = false;
};

void VirtualMainLoop::post(Work work) {
  journal_.perform("post", {}, [&] { deliver(std::move(work), Place::back, "post"); });
}

void VirtualMainLoop::after(std::chrono::milliseconds delay, Work work) {
  journal_.perform("after", std::to_string(delay.count()) + " ms", [&] {
    entries_.push_back({"after " + std::to_string(delay.count()) + " ms", false, std::nullopt, steady_ + delay,
                        std::move(work), nullptr});
  });
}

std::shared_ptr<Timer> VirtualMainLoop::timerAt(Instant fireDate, TimerHandler handler) {
  return add({"at " + utcText(fireDate), false, fireDate, {}, {}, nullptr}, std::move(handler));
}

std::shared_ptr<Timer> VirtualMainLoop::repeatingTimer(std::chrono::milliseconds interval, TimerHandler handler) {
  return add({"every " + std::to_string(interval.count()) + " ms", false, std::nullopt, interval, {}, nullptr},
             std::move(handler));
}

std::shared_ptr<Timer> VirtualMainLoop::add(Entry entry, TimerHandler handler) {
  return journal_.perform("timer", entry.description, [&] {
    const std::optional<Duration> interval = entry.fireDate ? std::nullopt : std::optional(entry.due);
    entry.due += steady_;
    entry.timer = std::make_shared<VirtualTimer>(journal_, std::move(handler), entry.description, interval);
    entries_.push_back(entry);
    return entry.timer;
  });
}

void VirtualMainLoop::elsewhere(Duration delay, Work event, std::string description) {
  entries_.push_back({std::move(description), true, std::nullopt, steady_ + delay, std::move(event), nullptr});
}

void VirtualMainLoop::deliver(Work work, Place place, std::string description) {
  const Duration due = place == Place::front ? Duration::min() / 2 : steady_;
  entries_.push_back({std::move(description), false, std::nullopt, due, std::move(work), nullptr});
}

void VirtualMainLoop::advance(Duration duration) { runUntil(steady_ + duration, false); }

void VirtualMainLoop::occupy(Duration duration) { runUntil(steady_ + duration, true); }

void VirtualMainLoop::dropPosted() {
  std::erase_if(entries_, [](const Entry& entry) { return !entry.timer && !entry.isElsewhere; });
}

void VirtualMainLoop::dropProgram() {
  std::erase_if(entries_, [](const Entry& entry) { return !entry.isElsewhere; });
}

std::vector<VirtualMainLoop::Pending> VirtualMainLoop::pending() const {
  std::vector<Pending> pending;
  for (const Entry& entry : entries_) {
    if (entry.timer && !entry.timer->isValid()) continue;
    pending.push_back({entry.description, remaining(entry), entry.timer.get(), entry.timer && entry.timer->isFiring()});
  }
  std::ranges::stable_sort(pending, std::ranges::less(), &Pending::remaining);
  return pending;
}

int VirtualMainLoop::armedTimers() const {
  return static_cast<int>(
      std::ranges::count_if(entries_, [](const Entry& entry) { return entry.timer && entry.timer->isValid(); }));
}

std::string VirtualMainLoop::nextTimer() const {
  std::optional<Instant> next;
  for (const Entry& entry : entries_)
    if (entry.fireDate && entry.timer->isValid() && (!next || *entry.fireDate < *next)) next = entry.fireDate;
  return next ? utcText(*next) : "none";
}

VirtualMainLoop::Duration VirtualMainLoop::remaining(const Entry& entry) const {
  return entry.fireDate ? *entry.fireDate - clock_ : entry.due - steady_;
}

// The entry that is due first and, among those, the one that was added first.
VirtualMainLoop::Entries::iterator VirtualMainLoop::earliest(bool elsewhereOnly) {
  std::erase_if(entries_, [](const Entry& entry) { return entry.timer && !entry.timer->isValid(); });
  auto best = entries_.end();
  for (auto entry = entries_.begin(); entry != entries_.end(); ++entry) {
    if (elsewhereOnly && !entry->isElsewhere) continue;
    if (entry->timer && entry->timer->isFiring()) continue;
    if (best == entries_.end() || remaining(*entry) < remaining(*best)) best = entry;
  }
  return best;
}

bool VirtualMainLoop::runNextUntil(Duration target, bool elsewhereOnly) {
  const auto next = earliest(elsewhereOnly);
  if (next == entries_.end()) return false;
  const Duration wait = std::max(Duration::zero(), remaining(*next));
  if (wait > std::max(Duration::zero(), target - steady_)) return false;
  pass(wait);
  run(next);
  return true;
}

void VirtualMainLoop::runUntil(Duration target, bool elsewhereOnly) {
  while (runNextUntil(target, elsewhereOnly)) continue;
  pass(std::max(Duration::zero(), target - steady_));
}

void VirtualMainLoop::run(Entries::iterator entry) {
  if (entry->timer && entry->timer->interval()) {
    while (entry->due <= steady_) entry->due += *entry->timer->interval();
    const std::shared_ptr<VirtualTimer> timer = entry->timer;  // its handler may erase the entry
    timer->fire();
    return;
  }
  const Entry once = std::move(*entry);
  entries_.erase(entry);
  if (once.timer) {
    once.timer->fire();
  } else {
    once.work();
  }
}

void VirtualMainLoop::pass(Duration duration) {
  steady_ += duration;
  clock_ += duration;
}
