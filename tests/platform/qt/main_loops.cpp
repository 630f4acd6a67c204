// The main loop on Qt's event loop, for the tests of interfaces.
#include "tests/interfaces/main_loops.h"

#include "platform/linux/session/session_main_loop.h"
#include "platform/qt/qt_event_loop.h"
#include "tests/platform/qt/run_until.h"

namespace {

class LoopOnQt : public MainLoopSubject {
 public:
  MainLoop& loop() override { return loop_; }
  bool runUntil(const std::function<bool()>& condition) override { return ::runUntil(condition); }
  void beBusyFor(std::chrono::milliseconds span) override { beBusy(span); }

 private:
  QtEventLoop eventLoop_;
  SessionMainLoop loop_{eventLoop_};
};

}  // namespace

std::vector<Implementation<MainLoopSubject>> mainLoops() {
  return {{"Qt", [] { return std::make_unique<LoopOnQt>(); }}};
}
