// What the session layer needs of a toolkit's event loop.
#pragma once

#include <memory>

#include "platform/main_loop.h"

enum class Readiness { readable, writable };

// Watches a descriptor as long as it lives, at first enabled.
class DescriptorWatch {
 public:
  virtual ~DescriptorWatch() = default;

  // The handler of a disabled watch is not called.
  virtual void setEnabled(bool enabled) = 0;
};

// Everything happens on the thread that runs the loop. The loop must outlive its watches. Handlers and work run in
// nested loops too, and must not throw.
class EventLoop {
 public:
  virtual ~EventLoop() = default;

  // Calls `handler` in each turn in which the descriptor is ready, with an error or a hang-up counting as ready. It may
  // call it once too often after a nested loop, so the descriptor should not block. A handler may destroy its own
  // watch.
  virtual std::unique_ptr<DescriptorWatch> watch(int descriptor, Readiness readiness, Work handler) = 0;

  // Runs `work` once, after the work that is running now and the work posted before. Drops it if the loop is destroyed
  // first.
  virtual void post(Work work) = 0;
};
