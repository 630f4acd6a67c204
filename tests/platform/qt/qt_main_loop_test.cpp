// The main loop on Qt's event loop and the real clocks. To show that something does not happen, the tests wait for
// something later: the loop keeps the order.
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
#include "tests/platform/qt/run_until.h"

namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;
using testing::ElementsAre;
using testing::IsEmpty;
using namespace std::chrono_literals;

constexpr auto shortWhile = 20ms;

// Keeps the thread busy, as long work does.
void beBusyFor(milliseconds span) {
  const auto end = steady_clock::now() + span;
  while (steady_clock::now() < end) continue;
}

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

TEST_F(QtMainLoopTest, postedWorkRunsInOrderAfterTheCurrentWork) {
  loop_.post([this] {
    loop_.post(note("third"));
    note("first")();
  });
  loop_.post(note("second"));
  EXPECT_THAT(noted_, IsEmpty());
  EXPECT_TRUE(runUntilNoted("third"));
  EXPECT_THAT(noted_, ElementsAre("first", "second", "third"));
}

TEST_F(QtMainLoopTest, everythingRunsInANestedLoop) {
  loop_.post([this] {
    loop_.post(note("posted"));
    loop_.after(1ms, note("after"));
    loop_.timerAt(loop_.now() + 2ms, noteFiring("timer"));
    const auto repeating = loop_.repeatingTimer(1ms, noteFiring("repeating"));
    for (const char* what : {"posted", "after", "timer", "repeating"}) EXPECT_TRUE(runUntilNoted(what)) << what;
    repeating->invalidate();
    note("the nested loop has ended")();
  });
  EXPECT_TRUE(runUntilNoted("the nested loop has ended"));
  EXPECT_EQ(noted_.back(), "the nested loop has ended");
}

TEST_F(QtMainLoopTest, delayedWorkRunsAfterItsDelay) {
  const auto start = steady_clock::now();
  std::optional<steady_clock::duration> waited;
  loop_.after(shortWhile, [&] { waited = steady_clock::now() - start; });
  loop_.after(0ms, note("at once"));
  EXPECT_THAT(noted_, IsEmpty()) << "not before `after` returns";
  EXPECT_TRUE(runUntilNoted("at once"));
  EXPECT_TRUE(runUntil([&] { return waited.has_value(); }));
  EXPECT_GE(waited, shortWhile);
}

TEST_F(QtMainLoopTest, overdueWorkRunsInOrderOfDueTime) {
  loop_.after(4ms, note("4 ms"));
  loop_.after(2ms, note("2 ms"));
  loop_.after(3ms, note("3 ms"));
  loop_.after(2ms, note("2 ms, requested later"));
  loop_.after(-5ms, note("-5 ms"));
  beBusyFor(10ms);
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
  beBusyFor(5ms);
  EXPECT_TRUE(runUntilNoted("third"));
  EXPECT_THAT(noted_, ElementsAre("first", "posted by it", "second", "third"));
}

TEST_F(QtMainLoopTest, aTimerFiresOnceAtItsDate) {
  const Instant fireDate = loop_.now() + shortWhile;
  std::optional<Instant> fired;
  std::shared_ptr<Timer> timer;
  timer = loop_.timerAt(fireDate, [&](Timer& fires) {
    EXPECT_EQ(&fires, timer.get());
    EXPECT_FALSE(fires.isValid()) << "it cannot fire again";
    EXPECT_FALSE(fired);
    fired = loop_.now();
  });
  EXPECT_TRUE(timer->isValid());
  EXPECT_TRUE(runUntil([&] { return fired.has_value(); }));
  EXPECT_GE(fired, fireDate);
  EXPECT_FALSE(timer->isValid());
  loop_.timerAt(loop_.now(), noteFiring("later"));
  EXPECT_TRUE(runUntilNoted("later"));
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

TEST_F(QtMainLoopTest, aTimerWithoutReferencesFires) {
  EXPECT_NE(loop_.timerAt(loop_.now() + 1ms, noteFiring("once")), nullptr);
  int firings = 0;
  loop_.repeatingTimer(1ms, [&](Timer& timer) {
    if (++firings == 3) timer.invalidate();
  });
  EXPECT_TRUE(runUntilNoted("once"));
  EXPECT_TRUE(runUntil([&] { return firings == 3; }));
}

TEST_F(QtMainLoopTest, anInvalidatedTimerNeverFires) {
  const auto once = loop_.timerAt(loop_.now() + 1ms, noteFiring("once"));
  const auto overdue = loop_.timerAt(Instant{}, noteFiring("overdue"));
  const auto repeating = loop_.repeatingTimer(1ms, noteFiring("repeating"));
  for (const auto& timer : {once, overdue, repeating}) {
    timer->invalidate();
    EXPECT_FALSE(timer->isValid());
    timer->invalidate();
  }
  loop_.after(shortWhile, note("later"));
  EXPECT_TRUE(runUntilNoted("later"));
  EXPECT_THAT(noted_, ElementsAre("later"));
}

TEST_F(QtMainLoopTest, aTimerMayInvalidateAnotherOverdueOne) {
  std::shared_ptr<Timer> second;
  loop_.timerAt(Instant{}, [&](Timer&) { second->invalidate(); });
  second = loop_.timerAt(Instant{}, noteFiring("second"));
  loop_.timerAt(Instant{}, noteFiring("third"));
  EXPECT_TRUE(runUntilNoted("third"));
  EXPECT_THAT(noted_, ElementsAre("third"));
}

TEST_F(QtMainLoopTest, aHandlerMayInvalidateItsOwnTimer) {
  const auto held = std::make_shared<int>(5);
  loop_.repeatingTimer(1ms, [this, held](Timer& timer) {
    EXPECT_TRUE(timer.isValid());
    timer.invalidate();
    timer.invalidate();
    EXPECT_FALSE(timer.isValid());
    EXPECT_EQ(*held, 5) << "the handler lasts until it returns";
    noted_.emplace_back("repeating");
  });
  loop_.timerAt(loop_.now(), [this, held](Timer& timer) {
    timer.invalidate();
    EXPECT_EQ(*held, 5);
    noted_.emplace_back("once");
  });
  loop_.after(shortWhile, note("later"));
  EXPECT_TRUE(runUntilNoted("later"));
  EXPECT_THAT(noted_, ElementsAre("once", "repeating", "later"));
  EXPECT_EQ(held.use_count(), 1);
}

TEST_F(QtMainLoopTest, handlersAreReleasedOnceDone) {
  const auto held = std::make_shared<int>();
  const auto fired = loop_.timerAt(Instant{}, [held](Timer&) {});
  const auto invalidated = loop_.timerAt(Instant::max(), [held](Timer&) {});
  const auto repeating = loop_.repeatingTimer(1h, [held](Timer&) {});
  loop_.after(0ms, [held] {});
  loop_.post([held] {});
  EXPECT_EQ(held.use_count(), 6);
  invalidated->invalidate();
  repeating->invalidate();
  loop_.after(1ms, note("later"));
  EXPECT_TRUE(runUntilNoted("later"));
  EXPECT_EQ(held.use_count(), 1);
}

TEST_F(QtMainLoopTest, invalidatingReleasesAHandlerThatOwnsItsTimer) {
  const auto held = std::make_shared<int>();
  const auto self = std::make_shared<std::shared_ptr<Timer>>();
  *self = loop_.repeatingTimer(1h, [held, self](Timer&) {});
  Timer& timer = **self;
  timer.invalidate();
  EXPECT_EQ(held.use_count(), 1);
}

TEST_F(QtMainLoopTest, aRepeatingTimerFiresAtEveryInterval) {
  const auto start = steady_clock::now();
  std::vector<steady_clock::duration> firings;
  std::shared_ptr<Timer> timer;
  timer = loop_.repeatingTimer(10ms, [&](Timer& fires) {
    EXPECT_EQ(&fires, timer.get());
    EXPECT_TRUE(fires.isValid());
    firings.push_back(steady_clock::now() - start);
  });
  EXPECT_TRUE(runUntil([&] { return firings.size() >= 5; }));
  timer->invalidate();
  for (std::size_t number = 0; number < firings.size(); ++number)
    EXPECT_GE(firings[number], 10ms * (number + 1)) << "firing " << number;
}

TEST_F(QtMainLoopTest, missedFiringsAreMadeOnce) {
  int firings = 0;
  const auto timer = loop_.repeatingTimer(50ms, [&](Timer&) { ++firings; });
  beBusyFor(220ms);
  loop_.after(0ms, note("all overdue work is done"));
  EXPECT_EQ(firings, 0);
  EXPECT_TRUE(runUntilNoted("all overdue work is done"));
  EXPECT_EQ(firings, 1);
  EXPECT_TRUE(runUntil([&] { return firings == 2; })) << "and the timer continues";
}

TEST_F(QtMainLoopTest, aTimerDoesNotFireWhileItsHandlerRuns) {
  int depth = 0;
  int firings = 0;
  const auto timer = loop_.repeatingTimer(2ms, [&](Timer&) {
    EXPECT_EQ(++depth, 1);
    if (++firings == 1) {
      loop_.after(shortWhile, note("the nested loop has ended"));
      EXPECT_TRUE(runUntilNoted("the nested loop has ended")) << "others do fire";
      EXPECT_EQ(firings, 1);
    }
    --depth;
  });
  EXPECT_TRUE(runUntil([&] { return firings == 3; }));
}

TEST_F(QtMainLoopTest, missedFiringsAreMadeOnceAfterTheHandler) {
  const auto timer = loop_.repeatingTimer(50ms, [&](Timer&) {
    note("fired")();
    if (noted_.size() > 1) return;
    beBusyFor(220ms);
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
  beBusyFor(75ms);
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

TEST_F(QtMainLoopTest, aNestedLoopMayInvalidateTheFiringTimer) {
  const auto timer = loop_.repeatingTimer(1ms, [&](Timer& fires) {
    note("fired")();
    loop_.post([&fires] { fires.invalidate(); });
    EXPECT_TRUE(runUntil([&] { return !fires.isValid(); }));
  });
  EXPECT_TRUE(runUntilNoted("fired"));
  loop_.after(shortWhile, note("later"));
  EXPECT_TRUE(runUntilNoted("later"));
  EXPECT_THAT(noted_, ElementsAre("fired", "later"));
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
