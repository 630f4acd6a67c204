// The main loops that tests run over: in quillery_tests the virtual one, and that of the session layer or of macOS; in
// quillery_desktop_tests that of the session layer on Qt's event loop.
#pragma once

#include <chrono>
#include <functional>
#include <vector>

#include "platform/main_loop.h"
#include "tests/interfaces/implementation.h"

class MainLoopSubject {
 public:
  virtual ~MainLoopSubject() = default;

  virtual MainLoop& loop() = 0;
  // Runs the loop until the condition holds. Returns false if it does not hold within many seconds of the loop's own
  // time. Calls may be nested.
  virtual bool runUntil(const std::function<bool()>& condition) = 0;
  // Keeps the thread busy for this long, as long work does.
  virtual void beBusyFor(std::chrono::milliseconds span) = 0;
};

std::vector<Implementation<MainLoopSubject>> mainLoops();

// Keeps the thread busy for this long of real time.
inline void beBusy(std::chrono::milliseconds span) {
  const auto end = std::chrono::steady_clock::now() + span;
  while (std::chrono::steady_clock::now() < end) continue;
}
