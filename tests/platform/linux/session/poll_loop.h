// An event loop over poll(), so that the session layer is tested without a toolkit.
#pragma once

#include <chrono>
#include <deque>
#include <functional>
#include <memory>
#include <vector>

#include "platform/linux/session/event_loop.h"

class PollLoop : public EventLoop {
 public:
  std::unique_ptr<DescriptorWatch> watch(int descriptor, Readiness readiness, Work handler) override;
  void post(Work work) override { posted_.push_back(std::move(work)); }

  // Runs the loop until the condition holds, and checks it after every turn and at least every few milliseconds.
  // Returns false if the timeout passes first. Calls may be nested.
  bool runUntil(const std::function<bool()>& condition, std::chrono::milliseconds timeout = std::chrono::seconds(20));

 private:
  struct Watched;
  class Watch;

  void runPosted();
  void callReadyHandlers();

  std::vector<std::weak_ptr<Watched>> watched_;
  std::deque<Work> posted_;
};
