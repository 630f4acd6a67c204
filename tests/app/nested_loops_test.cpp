// While a dialog is open its nested loop runs: timers fire, Safari quits, updates ask, the user has a hand free. Never
// does a second sort begin beside the first; each test says which guard holds.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <functional>
#include <string>

#include "app/alert.h"
#include "tests/support/controller_test.h"

namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr std::size_t quitSortAndReopen = 0;
constexpr std::size_t retry = 1;
constexpr std::size_t cancel = 2;

class NestedLoops : public ControllerTest {
 protected:
  NestedLoops() {
    storeDaily(9, 30);
    launch();
    controller_->scheduleDaily();
    noted();
  }

  // Sorts with Safari closed, and lets `meanwhile` happen while the result is shown; answers what was noted meanwhile.
  Entries whileTheResultIsShown(const std::function<void()>& meanwhile) {
    Entries during;
    machine_.userInterface.willAnswer(0, [&] {
      noted();
      meanwhile();
      during = noted();
    });
    controller_->sortNow();
    return during;
  }
  // The same while it is asked what to do about an open Safari.
  Entries whileItIsAsked(std::size_t answer, const std::function<void()>& meanwhile) {
    Entries during;
    machine_.userInterface.willAnswer(answer, [&] {
      noted();
      meanwhile();
      during = noted();
    });
    controller_->sortNow();
    return during;
  }
  void advanceToTheScheduledTime() { machine_.loop.advanceTo(utc("2026-09-21 09:30:00")); }
};

// --- The result of a sort is shown: `busy` holds ---

TEST_F(NestedLoops, theDailyTimerFiresWhileTheResultIsShownAndBusyHoldsItsSort) {
  EXPECT_THAT(whileTheResultIsShown([&] { advanceToTheScheduledTime(); }), ElementsAre("timer at 2026-09-22 09:30:00"));
  EXPECT_EQ(sorts(), 1);
  EXPECT_EQ(nextSort(), "2026-09-22 09:30:00");
}

TEST_F(NestedLoops, safariQuitsWhileTheResultIsShownAndBusyHoldsTheSortAfterIt) {
  const Entries during = whileTheResultIsShown([&] {
    startSafari();
    machine_.applications.end(safari);
    machine_.loop.advance(5s);
  });
  EXPECT_THAT(during, IsEmpty()) << "not even a wait of a second begins";
  EXPECT_EQ(sorts(), 1);
}

TEST_F(NestedLoops, anUpdateAsksWhileTheResultIsShownAndBusyPostponesIt) {
  int installations = 0;
  whileTheResultIsShown([&] {
    EXPECT_TRUE(controller_->shouldPostponeRelaunch([&] { ++installations; }));
    machine_.loop.advance(10s);
    EXPECT_EQ(installations, 0);
  });
  machine_.loop.advance(250ms);
  EXPECT_EQ(installations, 1);
}

TEST_F(NestedLoops, theUserAsksAgainWhileTheResultIsShownAndBusyHolds) {
  EXPECT_THAT(whileTheResultIsShown([&] {
                controller_->sortNow();
                controller_->tick();
                controller_->closeSortReopen(false);
              }),
              IsEmpty());
  EXPECT_EQ(sorts(), 1);
  EXPECT_FALSE(controller_->busy);
}

TEST_F(NestedLoops, sortingIsStoppedWhileTheResultIsShownAndStaysSo) {
  whileTheResultIsShown([&] { controller_->toggleRunning(); });
  EXPECT_FALSE(controller_->enabled);
  EXPECT_FALSE(controller_->busy);
  EXPECT_EQ(machine_.loop.armedTimers(), 0);
}

TEST_F(NestedLoops, theMachineWakesWhileTheResultIsShownAndTheTimerIsArmedAnew) {
  whileTheResultIsShown([&] {
    machine_.sleep(2h, VirtualMainLoop::Place::front);
    machine_.loop.run();
  });
  EXPECT_EQ(nextSort(), "2026-09-22 09:30:00");
  EXPECT_EQ(sorts(), 1);
}

// The job itself asks about a Safari that was opened between its check and the controller's.
TEST_F(NestedLoops, theDailyTimerFiresWhileTheJobAsksAboutSafariAndBusyHoldsItsSort) {
  int process = 0;
  machine_.journal.after("bundle path", [&](const std::string&) { process = startSafari(); });
  machine_.userInterface.willAnswer(0, [&] {
    advanceToTheScheduledTime();
    machine_.applications.endProcess(process);
    machine_.loop.advance(5s);
    EXPECT_EQ(sorts(), 0);
  });
  machine_.userInterface.willAnswer(0);
  controller_->sortNow();
  EXPECT_EQ(sorts(), 1);
  EXPECT_EQ(machine_.journal.count("quit"), 0);
}

// --- What to do about an open Safari is asked: nothing is in progress yet, so what comes first may sort ---

TEST_F(NestedLoops, theDailyTimerFiresWhileItIsAskedAndBusyHoldsTheAnswerThatComesAfterIt) {
  startSafari({.quitsAfter = 30s});
  whileItIsAsked(quitSortAndReopen, [&] {
    advanceToTheScheduledTime();
    EXPECT_TRUE(controller_->busy) << "the scheduled sequence has begun";
  });
  EXPECT_THAT(noted(), IsEmpty()) << "no second sequence begins, and Safari is not asked again";
  machine_.loop.advance(60s);
  EXPECT_EQ(machine_.journal.count("quit"), 1);
  EXPECT_EQ(sorts(), 1);
}

TEST_F(NestedLoops, theDailyTimerFiresWhileItIsAskedAndBusyHoldsARetry) {
  startSafari({.quitsAfter = 30s});
  whileItIsAsked(retry, [&] { advanceToTheScheduledTime(); });
  EXPECT_THAT(noted(), IsEmpty()) << "it is not asked again";
  machine_.loop.advance(60s);
  EXPECT_EQ(sorts(), 1);
}

TEST_F(NestedLoops, theScheduledSortRunsWhollyWhileItIsAskedAndTheAnswerIsASequenceOfItsOwn) {
  startSafari();
  whileItIsAsked(quitSortAndReopen, [&] {
    advanceToTheScheduledTime();
    machine_.loop.advance(2s);
    EXPECT_EQ(sorts(), 1);
    EXPECT_FALSE(controller_->busy);
  });
  EXPECT_TRUE(controller_->busy) << "Safari was reopened; it is asked to quit once more";
  machine_.loop.advance(2s);
  EXPECT_EQ(machine_.journal.count("quit"), 2);
  EXPECT_EQ(sorts(), 1) << "all is in order already";
}

TEST_F(NestedLoops, safariQuitsWhileItIsAskedAndTheSortAfterItLeavesNothingForTheRetry) {
  startSafari();
  machine_.userInterface.willAnswer(retry, [&] {
    machine_.applications.end(safari);
    machine_.loop.advance(1s);
    EXPECT_EQ(sorts(), 1);
  });
  machine_.userInterface.willAnswer(0);
  controller_->sortNow();
  EXPECT_EQ(machine_.userInterface.alerts().at(1).messageText, "Already sorted");
  EXPECT_EQ(sorts(), 1);
}

TEST_F(NestedLoops, safariQuitsWhileItIsAskedAndBusyHoldsTheSortAfterItDuringTheRetry) {
  startSafari();
  machine_.userInterface.willAnswer(retry, [&] {
    machine_.applications.end(safari);
    machine_.loop.advance(500ms);
  });
  machine_.userInterface.willAnswer(0, [&] {
    noted();
    machine_.loop.advance(5s);
    EXPECT_THAT(noted(), IsEmpty()) << "the attempt after the second finds a sort in progress";
  });
  controller_->sortNow();
  EXPECT_EQ(sorts(), 1);
}

TEST_F(NestedLoops, anUpdateAsksWhileItIsAskedAndUpdateInstallPendingHoldsTheAnswer) {
  startSafari();
  whileItIsAsked(quitSortAndReopen, [&] { EXPECT_FALSE(controller_->shouldPostponeRelaunch([] {})); });
  EXPECT_THAT(noted(), IsEmpty());
  EXPECT_FALSE(controller_->busy);
  EXPECT_EQ(machine_.journal.count("quit"), 0);
}

TEST_F(NestedLoops, anUpdateAsksWhileItIsAskedAndUpdateInstallPendingHoldsTheRetry) {
  startSafari();
  whileItIsAsked(retry, [&] {
    controller_->shouldPostponeRelaunch([] {});
    machine_.applications.end(safari);
    machine_.loop.advance(5s);
  });
  EXPECT_EQ(sorts(), 0);
}

TEST_F(NestedLoops, accessIsLostWhileItIsAskedAndTheProbeHoldsTheAnswer) {
  startSafari();
  whileItIsAsked(quitSortAndReopen, [&] { removeBookmarks(); });
  EXPECT_EQ(noted(), Entries{"read " + bookmarks});
  EXPECT_EQ(machine_.journal.count("quit"), 0);
}

TEST_F(NestedLoops, theUserAsksAgainWhileItIsAskedAndBusyHoldsTheFirstAnswer) {
  startSafari({.quitsAfter = 10s});
  machine_.userInterface.willAnswer(quitSortAndReopen, [&] {
    machine_.userInterface.willAnswer(quitSortAndReopen);
    controller_->sortNow();
    EXPECT_TRUE(controller_->busy);
  });
  controller_->sortNow();
  machine_.loop.advance(60s);
  EXPECT_EQ(machine_.journal.count("quit"), 1);
  EXPECT_EQ(sorts(), 1);
}

// --- "Safari did not close" is shown: the sequence is over ---

TEST_F(NestedLoops, safariQuitsWhileTheFailureIsShownAndOneSortFollowsIt) {
  startSafari({.quitsAfter = std::nullopt});
  controller_->closeSortReopen(false);
  machine_.userInterface.willAnswer(0, [&] {
    machine_.applications.end(safari);
    machine_.loop.advance(5s);
    EXPECT_EQ(sorts(), 1);
  });
  machine_.loop.advance(45s);
  EXPECT_EQ(sorts(), 1);
  EXPECT_FALSE(controller_->busy);
}

TEST_F(NestedLoops, theFailureIsShownOnceHoweverLongItIsShown) {
  startSafari({.quitsAfter = std::nullopt});
  controller_->closeSortReopen(false);
  machine_.userInterface.willAnswer(0, [&] { machine_.loop.advance(10min); });
  machine_.loop.advance(45s);
  EXPECT_EQ(machine_.userInterface.alerts().size(), 1U);
}

// --- Unattended work has no dialogs, so nothing is nested in it ---

TEST_F(NestedLoops, anUnattendedSortPrintsThoughADialogIsOpen) {
  startSafari();
  whileItIsAsked(cancel, [&] {
    advanceToTheScheduledTime();
    machine_.loop.advance(2s);
    EXPECT_FALSE(automatic);
  });
  EXPECT_EQ(machine_.output.text(), "Bookmarks sorted: " + sortedMessage() + "\n");
  EXPECT_EQ(machine_.userInterface.alerts().size(), 1U);
}

}  // namespace
