#include "tests/platform/linux/session/poll_loop.h"

#include <poll.h>

#include <utility>

struct PollLoop::Watched {
  int descriptor;
  short events;
  Work handler;
  bool isEnabled = true;
};

class PollLoop::Watch : public DescriptorWatch {
 public:
  explicit Watch(std::shared_ptr<Watched> watched) : watched_(std::move(watched)) {}
  void setEnabled(bool enabled) override { watched_->isEnabled = enabled; }

 private:
  std::shared_ptr<Watched> watched_;
};

std::unique_ptr<DescriptorWatch> PollLoop::watch(int descriptor, Readiness readiness, Work handler) {
  const short events = readiness == Readiness::readable ? POLLIN : POLLOUT;
  auto watched = std::make_shared<Watched>(Watched{descriptor, events, std::move(handler)});
  watched_.push_back(watched);
  return std::make_unique<Watch>(std::move(watched));
}

bool PollLoop::runUntil(const std::function<bool()>& condition, std::chrono::milliseconds timeout) {
  const auto end = std::chrono::steady_clock::now() + timeout;
  while (!condition()) {
    if (std::chrono::steady_clock::now() >= end) return false;
    runPosted();
    callReadyHandlers();
  }
  return true;
}

// Leaves what is posted meanwhile to the next turn.
void PollLoop::runPosted() {
  for (std::size_t count = posted_.size(); count > 0 && !posted_.empty(); --count) {
    const Work work = std::move(posted_.front());
    posted_.pop_front();
    work();
  }
}

void PollLoop::callReadyHandlers() {
  constexpr int longestWait = 5;  // milliseconds
  std::erase_if(watched_, [](const auto& watched) { return watched.expired(); });
  const std::vector<std::weak_ptr<Watched>> watchedNow = watched_;
  std::vector<pollfd> descriptors;
  for (const auto& watched : watchedNow) {
    const auto present = watched.lock();
    descriptors.push_back({present->isEnabled ? present->descriptor : -1, present->events, 0});
  }
  if (poll(descriptors.data(), descriptors.size(), posted_.empty() ? longestWait : 0) <= 0) return;
  for (std::size_t index = 0; index < descriptors.size(); ++index) {
    if (descriptors[index].revents == 0) continue;
    // A handler before this one may have disabled or destroyed the watch; this one may destroy its own.
    const auto present = watchedNow[index].lock();
    if (present && present->isEnabled) present->handler();
  }
}
