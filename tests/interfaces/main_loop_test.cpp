// The main loop: what every implementation promises. To show that something does not happen, the tests wait for
// something later: the loop keeps the order.
#include "platform/main_loop.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "tests/interfaces/differences.h"
#include "tests/interfaces/main_loops.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using namespace std::chrono_literals;

constexpr auto shortWhile = 20ms;

class MainLoopTest : public InterfaceTest<Implementation<MainLoopSubject>> {
 protected:
  Work note(const std::string& what) {
    return [this, what] { noted_.push_back(what); };
  }
  TimerHandler noteFiring(const std::string& what) {
    return [this, what](Timer&) { noted_.push_back(what); };
  }
  bool runUntil(const std::function<bool()>& condition) { return subject_->runUntil(condition); }
  bool runUntilNoted(const std::string& what) {
    return runUntil([&] { return std::ranges::count(noted_, what) > 0; });
  }

  std::vector<std::string> noted_;
  const std::unique_ptr<MainLoopSubject> subject_ = GetParam().make();
  MainLoop& loop_ = subject_->loop();
};

INSTANTIATE_TEST_SUITE_P(Implementations, MainLoopTest, testing::ValuesIn(mainLoops()), implementationName);

TEST_P(MainLoopTest, runsPostedWorkInOrderAfterTheCurrentWork) {
  loop_.post([this] {
    loop_.post(note("third"));
    note("first")();
  });
  loop_.post(note("second"));
  EXPECT_THAT(noted_, IsEmpty());
  EXPECT_TRUE(runUntilNoted("third"));
  EXPECT_THAT(noted_, ElementsAre("first", "second", "third"));
}

TEST_P(MainLoopTest, runsEverythingInANestedLoop) {
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

TEST_P(MainLoopTest, runsDelayedWorkAfterItsDelay) {
  const Instant start = loop_.now();
  std::optional<Instant> ran;
  loop_.after(shortWhile, [&] { ran = loop_.now(); });
  loop_.after(0ms, note("at once"));
  EXPECT_THAT(noted_, IsEmpty()) << "not before `after` returns";
  EXPECT_TRUE(runUntilNoted("at once"));
  EXPECT_TRUE(runUntil([&] { return ran.has_value(); }));
  EXPECT_GE(ran, start + shortWhile - 1ms) << "the clocks of the delay and of the wall may differ a little";
}

TEST_P(MainLoopTest, firesATimerOnceAtItsDate) {
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
  EXPECT_GE(fired, fireDate - 1ms);
  EXPECT_FALSE(timer->isValid());
  loop_.timerAt(loop_.now(), noteFiring("later"));
  EXPECT_TRUE(runUntilNoted("later"));
}

TEST_P(MainLoopTest, firesATimerForAPastDateInTheNextTurn) {
  loop_.timerAt(Instant{}, noteFiring("1970"));
  const auto justNow = loop_.timerAt(loop_.now() - 1us, noteFiring("just now"));
  EXPECT_THAT(noted_, IsEmpty());
  EXPECT_TRUE(justNow->isValid());
  EXPECT_TRUE(runUntilNoted("just now"));
  EXPECT_TRUE(runUntilNoted("1970"));
  EXPECT_EQ(noted_.size(), 2U);
}

TEST_P(MainLoopTest, firesATimerWithoutReferences) {
  EXPECT_NE(loop_.timerAt(loop_.now() + 1ms, noteFiring("once")), nullptr);
  int firings = 0;
  loop_.repeatingTimer(1ms, [&](Timer& timer) {
    if (++firings == 3) timer.invalidate();
  });
  EXPECT_TRUE(runUntilNoted("once"));
  EXPECT_TRUE(runUntil([&] { return firings >= 3; }));
}

TEST_P(MainLoopTest, neverFiresAnInvalidatedTimer) {
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

TEST_P(MainLoopTest, letsATimerInvalidateAnotherOverdueOne) {
  std::shared_ptr<Timer> second;
  loop_.timerAt(Instant{}, [&](Timer&) { second->invalidate(); });
  second = loop_.timerAt(Instant{} + 1s, noteFiring("second"));
  loop_.timerAt(Instant{} + 2s, noteFiring("third"));
  EXPECT_TRUE(runUntilNoted("third"));
  EXPECT_THAT(noted_, ElementsAre("third"));
}

TEST_P(MainLoopTest, letsAHandlerInvalidateItsOwnTimer) {
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

TEST_P(MainLoopTest, releasesHandlersOnceDone) {
  const auto held = std::make_shared<int>();
  const auto fired = loop_.timerAt(Instant{}, [held](Timer&) {});
  const auto invalidated = loop_.timerAt(loop_.now() + 24h, [held](Timer&) {});
  const auto repeating = loop_.repeatingTimer(1h, [held](Timer&) {});
  loop_.after(0ms, [held] {});
  loop_.post([held] {});
  EXPECT_GE(held.use_count(), 6);
  invalidated->invalidate();
  repeating->invalidate();
  loop_.after(1ms, note("later"));
  EXPECT_TRUE(runUntilNoted("later"));
  EXPECT_EQ(held.use_count(), 1);
}

TEST_P(MainLoopTest, releasesAHandlerThatOwnsItsTimer) {
  const auto held = std::make_shared<int>();
  const auto self = std::make_shared<std::shared_ptr<Timer>>();
  *self = loop_.repeatingTimer(1h, [held, self](Timer&) {});
  Timer& timer = **self;
  timer.invalidate();
  EXPECT_EQ(held.use_count(), 1);
}

TEST_P(MainLoopTest, firesARepeatingTimerAtEveryInterval) {
  const Instant start = loop_.now();
  std::vector<Instant> firings;
  std::shared_ptr<Timer> timer;
  timer = loop_.repeatingTimer(10ms, [&](Timer& fires) {
    EXPECT_EQ(&fires, timer.get());
    EXPECT_TRUE(fires.isValid());
    firings.push_back(loop_.now());
  });
  EXPECT_TRUE(runUntil([&] { return firings.size() >= 5; }));
  timer->invalidate();
  for (std::size_t number = 0; number < firings.size(); ++number)
    EXPECT_GE(firings[number], start + 10ms * (number + 1) - 1ms) << "firing " << number;
}

TEST_P(MainLoopTest, makesMissedFiringsOnce) {
  int firings = 0;
  const auto timer = loop_.repeatingTimer(50ms, [&](Timer&) { ++firings; });
  subject_->beBusyFor(220ms);
  loop_.after(0ms, note("all overdue work is done"));
  EXPECT_EQ(firings, 0);
  EXPECT_TRUE(runUntilNoted("all overdue work is done"));
  EXPECT_EQ(firings, 1);
  EXPECT_TRUE(runUntil([&] { return firings == 2; })) << "and the timer continues";
  timer->invalidate();
}

TEST_P(MainLoopTest, firesNoTimerWhileItsHandlerRuns) {
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
  EXPECT_TRUE(runUntil([&] { return firings >= 3; }));
  timer->invalidate();
}

TEST_P(MainLoopTest, letsANestedLoopInvalidateTheFiringTimer) {
  loop_.repeatingTimer(1ms, [&](Timer& fires) {
    note("fired")();
    loop_.post([&fires] { fires.invalidate(); });
    EXPECT_TRUE(runUntil([&] { return !fires.isValid(); }));
  });
  EXPECT_TRUE(runUntilNoted("fired"));
  loop_.after(shortWhile, note("later"));
  EXPECT_TRUE(runUntilNoted("later"));
  EXPECT_THAT(noted_, ElementsAre("fired", "later"));
}

}  // namespace
