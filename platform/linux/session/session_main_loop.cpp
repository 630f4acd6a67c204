#include "platform/linux/session/session_main_loop.h"

#include <utility>

SessionMainLoop::SessionMainLoop(EventLoop& eventLoop)
    : eventLoop_(eventLoop), wallClock_(eventLoop, CLOCK_REALTIME), steadyClock_(eventLoop, CLOCK_MONOTONIC) {}

Instant SessionMainLoop::now() { return std::chrono::system_clock::now(); }

void SessionMainLoop::post(Work work) { eventLoop_.post(std::move(work)); }

void SessionMainLoop::after(std::chrono::milliseconds delay, Work work) {
  steadyClock_.after(delay, [work = std::move(work)](Timer&) { work(); });
}

std::shared_ptr<Timer> SessionMainLoop::timerAt(Instant fireDate, TimerHandler handler) {
  return wallClock_.at(fireDate.time_since_epoch(), std::move(handler));
}

std::shared_ptr<Timer> SessionMainLoop::repeatingTimer(std::chrono::milliseconds interval, TimerHandler handler) {
  return steadyClock_.every(interval, std::move(handler));
}
