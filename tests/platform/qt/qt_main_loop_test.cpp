// The main loop on Qt's event loop and the real clocks: what it promises beyond its interface. To show that something
// does not happen, the tests wait for something later: the loop keeps the order.
#include <dirent.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <ctime>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "platform/linux/session/session_main_loop.h"
#include "platform/qt/qt_event_loop.h"
#include "tests/interfaces/main_loops.h"
#include "tests/platform/qt/run_until.h"

namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;
using testing::ElementsAre;
using testing::IsEmpty;
using namespace std::chrono_literals;

constexpr auto shortWhile = 20ms;

class QtMainLoopTest : public testing::Test {
 protected:
  Work note(const std::string& what) {
    return [this, what] { noted_.push_back(what); };
  }
  TimerHandler noteFiring(const std::string& what) {
    return [this, what](Timer&) { noted_.push_back(what); };
  }
  bool runUntilNoted(const std::string& what) {
    return runUntil([&] { return std::find(noted_.begin(), noted_.end(), what) != noted_.end(); });
  }

  std::vector<std::string> noted_;
  QtEventLoop eventLoop_;
  SessionMainLoop loop_{eventLoop_};
};

TEST_F(QtMainLoopTest, nowIsTheWallClock) {
  const Instant before = systemTime();
  const Instant now = loop_.now();
  EXPECT_LE(before, now);
  EXPECT_LE(now, std::chrono::system_clock::now());
}

TEST_F(QtMainLoopTest, overdueWorkRunsInOrderOfDueTime) {
  loop_.after(4ms, note("4 ms"));
  loop_.after(2ms, note("2 ms"));
  loop_.after(3ms, note("3 ms"));
  loop_.after(2ms, note("2 ms, requested later"));
  loop_.after(-5ms, note("-5 ms"));
  beBusy(10ms);
  loop_.after(0ms, note("0 ms, requested last"));
  EXPECT_TRUE(runUntilNoted("0 ms, requested last"));
  EXPECT_THAT(noted_, ElementsAre("-5 ms", "2 ms", "2 ms, requested later", "3 ms", "4 ms", "0 ms, requested last"));
}

TEST_F(QtMainLoopTest, postedWorkDoesNotWaitForAllOverdueWork) {
  loop_.after(0ms, [this] {
    note("first")();
    loop_.post(note("posted by it"));
  });
  loop_.after(1ms, note("second"));
  loop_.after(2ms, note("third"));
  beBusy(5ms);
  EXPECT_TRUE(runUntilNoted("third"));
  EXPECT_THAT(noted_, ElementsAre("first", "posted by it", "second", "third"));
}

TEST_F(QtMainLoopTest, aTimerForAPastDateFiresInTheNextTurn) {
  loop_.timerAt(Instant{}, noteFiring("1970"));
  loop_.timerAt(Instant{} - 1000000h, noteFiring("long before"));
  loop_.timerAt(Instant::min(), noteFiring("the beginning of time"));
  const auto justNow = loop_.timerAt(loop_.now() - 1us, noteFiring("just now"));
  EXPECT_THAT(noted_, IsEmpty());
  EXPECT_TRUE(justNow->isValid());
  EXPECT_TRUE(runUntilNoted("just now"));
  EXPECT_THAT(noted_, ElementsAre("the beginning of time", "long before", "1970", "just now"));
}

TEST_F(QtMainLoopTest, aTimerForTheEndOfTimeDelaysNoOther) {
  const auto never = loop_.timerAt(Instant::max(), noteFiring("the end of time"));
  const auto nearlyNever = loop_.repeatingTimer(milliseconds::max(), noteFiring("ages"));
  loop_.after(milliseconds::max(), note("ages"));
  loop_.after(40 * 24h, note("longer than 32 bits of milliseconds"));
  loop_.timerAt(loop_.now() + 1ms, noteFiring("now"));
  loop_.after(shortWhile, note("soon"));
  EXPECT_TRUE(runUntilNoted("soon"));
  EXPECT_THAT(noted_, ElementsAre("now", "soon"));
  EXPECT_TRUE(never->isValid());
  EXPECT_TRUE(nearlyNever->isValid());
}

TEST_F(QtMainLoopTest, missedFiringsAreMadeOnceAfterTheHandler) {
  const auto timer = loop_.repeatingTimer(50ms, [&](Timer&) {
    note("fired")();
    if (noted_.size() > 1) return;
    beBusy(220ms);
    loop_.after(0ms, note("all overdue work is done"));
  });
  EXPECT_TRUE(runUntilNoted("all overdue work is done"));
  EXPECT_THAT(noted_, ElementsAre("fired", "fired", "all overdue work is done"));
}

// Makes a timer of 50 ms fire 75 ms after its creation. Returns true if it fires again before 110 ms have passed;
// absent if the machine was too busy to decide.
std::optional<bool> keepsToTheInterval(MainLoop& loop) {
  std::optional<steady_clock::time_point> firstFiring;
  std::vector<std::string> order;
  const auto before = steady_clock::now();
  const auto timer = loop.repeatingTimer(50ms, [&](Timer&) {
    if (firstFiring) order.emplace_back("fired again");
    if (!firstFiring) firstFiring = steady_clock::now();
  });
  loop.after(110ms, [&] { order.emplace_back("110 ms"); });
  const auto after = steady_clock::now();
  beBusy(75ms);
  const bool firedTwice = runUntil([&] { return order.size() >= 2; });
  timer->invalidate();
  const bool wasQuick = after - before < 10ms && firstFiring && *firstFiring - before < 100ms;
  return firedTwice && wasQuick ? std::optional(order.front() == "fired again") : std::nullopt;
}

TEST_F(QtMainLoopTest, aLateFiringDoesNotShiftTheNext) {
  for (int attempt = 0; attempt < 20; ++attempt)
    if (const auto keeps = keepsToTheInterval(loop_)) {
      EXPECT_TRUE(*keeps);
      return;
    }
  GTEST_SKIP() << "this machine is too busy to fire a timer within 25 ms";
}

TEST_F(QtMainLoopTest, aNonPositiveIntervalIsTheShortest) {
  int firings = 0;
  const auto none = loop_.repeatingTimer(0ms, [&](Timer&) { ++firings; });
  EXPECT_TRUE(runUntil([&] { return firings == 3; }));
  none->invalidate();
  const auto negative = loop_.repeatingTimer(-1h, [&](Timer&) { ++firings; });
  EXPECT_TRUE(runUntil([&] { return firings == 6; }));
}

TEST_F(QtMainLoopTest, aDestroyedLoopDropsPendingWork) {
  const auto held = std::make_shared<int>();
  std::shared_ptr<Timer> once;
  std::shared_ptr<Timer> repeating;
  {
    QtEventLoop eventLoop;
    SessionMainLoop other(eventLoop);
    other.post([this, held] { note("posted")(); });
    other.after(0ms, [this, held] { note("after")(); });
    once = other.timerAt(Instant{}, [this, held](Timer&) { note("once")(); });
    repeating = other.repeatingTimer(1ms, [this, held](Timer&) { note("repeating")(); });
  }
  EXPECT_EQ(held.use_count(), 1);
  EXPECT_FALSE(once->isValid());
  EXPECT_FALSE(repeating->isValid());
  repeating->invalidate();
  loop_.after(5ms, note("later"));
  EXPECT_TRUE(runUntilNoted("later"));
  EXPECT_THAT(noted_, ElementsAre("later"));
}

TEST_F(QtMainLoopTest, manyTimersShareTheDescriptors) {
  const auto openDescriptors = [] {
    int count = 0;
    DIR* const folder = opendir("/proc/self/fd");
    while (readdir(folder) != nullptr) ++count;
    closedir(folder);
    return count;
  };
  loop_.timerAt(Instant::max(), [](Timer&) {});
  const int before = openDescriptors();
  int firings = 0;
  for (int number = 0; number < 500; ++number)
    loop_.timerAt(Instant{} + milliseconds(number), [&](Timer&) { ++firings; });
  EXPECT_EQ(openDescriptors(), before);
  EXPECT_TRUE(runUntil([&] { return firings == 500; }));
}

TEST_F(QtMainLoopTest, anIdleLoopSleeps) {
  loop_.repeatingTimer(1h, [](Timer&) {});
  loop_.timerAt(loop_.now() + 1h, [](Timer&) {});
  loop_.after(200ms, note("later"));
  const std::clock_t start = std::clock();
  EXPECT_TRUE(runUntilNoted("later"));
  EXPECT_LT(std::clock() - start, CLOCKS_PER_SEC / 10) << "the loop used the processor while it was idle";
}

using QtMainLoopDeathTest = QtMainLoopTest;

TEST_F(QtMainLoopDeathTest, anExceptionFromWorkEndsTheProcess) {
  const auto throwing = [] { throw std::runtime_error("from the work"); };
  EXPECT_DEATH(
      {
        loop_.post(throwing);
        runUntil([] { return false; }, 1s);
      },
      "from the work");
  EXPECT_DEATH(
      {
        loop_.timerAt(Instant{}, [&](Timer&) { throwing(); });
        runUntil([] { return false; }, 1s);
      },
      "from the work");
}

}  // namespace
