#include "platform/linux/session/session_main_loop.h"

#include <algorithm>
#include <chrono>
#include <utility>

namespace {

// Returns the clock's time at a date, or the end of the clock's range if the date is beyond it.
ClockTimers::ClockTime clockTimeOf(Instant date) {
  using Limits = ClockTimers::ClockTime;
  return std::clamp(date.time_since_epoch(), std::chrono::ceil<Instant::duration>(Limits::min()),
                    std::chrono::floor<Instant::duration>(Limits::max()));
}

}  // namespace

SessionMainLoop::SessionMainLoop(EventLoop& eventLoop)
    : eventLoop_(eventLoop), wallClock_(eventLoop, CLOCK_REALTIME), steadyClock_(eventLoop, CLOCK_MONOTONIC) {}

Instant SessionMainLoop::now() { return systemTime(); }

void SessionMainLoop::post(Work work) { eventLoop_.post(std::move(work)); }

void SessionMainLoop::after(std::chrono::milliseconds delay, Work work) {
  steadyClock_.after(delay, [work = std::move(work)](Timer&) { work(); });
}

std::shared_ptr<Timer> SessionMainLoop::timerAt(Instant fireDate, TimerHandler handler) {
  return wallClock_.at(clockTimeOf(fireDate), std::move(handler));
}

std::shared_ptr<Timer> SessionMainLoop::repeatingTimer(std::chrono::milliseconds interval, TimerHandler handler) {
  return steadyClock_.every(interval, std::move(handler));
}
