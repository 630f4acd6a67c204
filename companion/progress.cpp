#include "companion/progress.h"

#include <chrono>
#include <iostream>
#include <system_error>

#include "platform/platform.h"

Progress::Progress(bool isWanted) {
  if (!isWanted || !platform().processes.writesToTerminal()) return;
  try {
    thread_ = std::thread([this] { show(); });
  } catch (const std::system_error&) {
    return;  // the command works without a sign, too
  }
}

Progress::~Progress() {
  {
    const std::lock_guard lock(mutex_);
    hasEnded_ = true;
  }
  ended_.notify_one();
  if (thread_.joinable()) thread_.join();
}

void Progress::show() {
  std::unique_lock lock(mutex_);
  if (ended_.wait_for(lock, std::chrono::seconds(1), [this] { return hasEnded_; })) return;
  std::cout << "Working…" << std::flush;
  ended_.wait(lock, [this] { return hasEnded_; });
  std::cout << "\r\x1b[K" << std::flush;
}
