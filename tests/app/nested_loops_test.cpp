// A dialog runs a nested event loop, in which timers fire, Safari quits, updates ask to relaunch and the user chooses
// commands. A second sort must never begin during the first; the section headings name the guard that prevents it.
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

  // Sorts with Safari closed and runs `meanwhile` while the result is shown. Returns the journal of that time.
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
  // The same while the question about an open Safari is shown, which is then answered with this button.
  Entries whileTheQuestionIsOpen(std::size_t answer, const std::function<void()>& meanwhile) {
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

// --- The result of a sort is shown: `busy` is the guard ---

TEST_F(NestedLoops, dailySortIsSkippedWhileTheResultIsShown) {
  EXPECT_THAT(whileTheResultIsShown([&] { advanceToTheScheduledTime(); }), ElementsAre("timer at 2026-09-22 09:30:00"));
  EXPECT_EQ(sorts(), 1);
  EXPECT_EQ(nextSort(), "2026-09-22 09:30:00");
}

TEST_F(NestedLoops, sortOnQuitIsSkippedWhileTheResultIsShown) {
  const Entries during = whileTheResultIsShown([&] {
    startSafari();
    machine_.applications.end(safari);
    machine_.loop.advance(5s);
  });
  EXPECT_THAT(during, IsEmpty()) << "not even the delay of one second begins";
  EXPECT_EQ(sorts(), 1);
}

TEST_F(NestedLoops, updateIsPostponedWhileTheResultIsShown) {
  int installations = 0;
  whileTheResultIsShown([&] {
    EXPECT_TRUE(controller_->shouldPostponeRelaunch([&] { ++installations; }));
    machine_.loop.advance(10s);
    EXPECT_EQ(installations, 0);
  });
  machine_.loop.advance(250ms);
  EXPECT_EQ(installations, 1);
}

TEST_F(NestedLoops, commandsAreIgnoredWhileTheResultIsShown) {
  EXPECT_THAT(whileTheResultIsShown([&] {
                controller_->sortNow();
                controller_->tick();
                controller_->closeSortReopen(false);
              }),
              IsEmpty());
  EXPECT_EQ(sorts(), 1);
  EXPECT_FALSE(controller_->busy);
}

TEST_F(NestedLoops, sortingStoppedWhileTheResultIsShownStaysStopped) {
  whileTheResultIsShown([&] { controller_->toggleRunning(); });
  EXPECT_FALSE(controller_->enabled);
  EXPECT_FALSE(controller_->busy);
  EXPECT_EQ(machine_.loop.armedTimers(), 0);
}

TEST_F(NestedLoops, wakeRearmsTheTimerWhileTheResultIsShown) {
  whileTheResultIsShown([&] {
    machine_.sleep(2h, VirtualMainLoop::Place::front);
    machine_.loop.run();
  });
  EXPECT_EQ(nextSort(), "2026-09-22 09:30:00");
  EXPECT_EQ(sorts(), 1);
}

// Safari starts between the controller's check and the job's, so the job itself asks about it.
TEST_F(NestedLoops, dailySortIsSkippedWhileTheJobAsksAboutSafari) {
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

// --- The question about an open Safari is shown: nothing is in progress yet, so whatever comes first may sort ---

TEST_F(NestedLoops, ignoresTheAnswerIfTheTimerFiredMeanwhile) {
  startSafari({.quitsAfter = 30s});
  whileTheQuestionIsOpen(quitSortAndReopen, [&] {
    advanceToTheScheduledTime();
    EXPECT_TRUE(controller_->busy) << "the scheduled sequence has begun";
  });
  EXPECT_THAT(noted(), IsEmpty()) << "no second sequence begins, and Safari gets no second request";
  machine_.loop.advance(60s);
  EXPECT_EQ(machine_.journal.count("quit"), 1);
  EXPECT_EQ(sorts(), 1);
}

TEST_F(NestedLoops, ignoresARetryIfTheTimerFiredMeanwhile) {
  startSafari({.quitsAfter = 30s});
  whileTheQuestionIsOpen(retry, [&] { advanceToTheScheduledTime(); });
  EXPECT_THAT(noted(), IsEmpty()) << "the question is not shown again";
  machine_.loop.advance(60s);
  EXPECT_EQ(sorts(), 1);
}

TEST_F(NestedLoops, answerAfterAFinishedDailySortStartsASequence) {
  startSafari();
  whileTheQuestionIsOpen(quitSortAndReopen, [&] {
    advanceToTheScheduledTime();
    machine_.loop.advance(2s);
    EXPECT_EQ(sorts(), 1);
    EXPECT_FALSE(controller_->busy);
  });
  EXPECT_TRUE(controller_->busy) << "Safari was reopened and is asked to quit again";
  machine_.loop.advance(2s);
  EXPECT_EQ(machine_.journal.count("quit"), 2);
  EXPECT_EQ(sorts(), 1) << "all is already in order";
}

TEST_F(NestedLoops, retryFindsTheBookmarksSortedByTheSortOnQuit) {
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

TEST_F(NestedLoops, sortOnQuitIsSkippedWhileTheRetrySorts) {
  startSafari();
  machine_.userInterface.willAnswer(retry, [&] {
    machine_.applications.end(safari);
    machine_.loop.advance(500ms);
  });
  machine_.userInterface.willAnswer(0, [&] {
    noted();
    machine_.loop.advance(5s);
    EXPECT_THAT(noted(), IsEmpty()) << "the delayed attempt finds a sort in progress";
  });
  controller_->sortNow();
  EXPECT_EQ(sorts(), 1);
}

TEST_F(NestedLoops, ignoresTheAnswerIfAnUpdateWaits) {
  startSafari();
  whileTheQuestionIsOpen(quitSortAndReopen, [&] { EXPECT_FALSE(controller_->shouldPostponeRelaunch([] {})); });
  EXPECT_THAT(noted(), IsEmpty());
  EXPECT_FALSE(controller_->busy);
  EXPECT_EQ(machine_.journal.count("quit"), 0);
}

TEST_F(NestedLoops, ignoresARetryIfAnUpdateWaits) {
  startSafari();
  whileTheQuestionIsOpen(retry, [&] {
    controller_->shouldPostponeRelaunch([] {});
    machine_.applications.end(safari);
    machine_.loop.advance(5s);
  });
  EXPECT_EQ(sorts(), 0);
}

TEST_F(NestedLoops, ignoresTheAnswerIfAccessIsLost) {
  startSafari();
  whileTheQuestionIsOpen(quitSortAndReopen, [&] { removeBookmarks(); });
  EXPECT_EQ(noted(), Entries{"read " + bookmarks});
  EXPECT_EQ(machine_.journal.count("quit"), 0);
}

TEST_F(NestedLoops, ignoresTheOuterAnswerOfTwoNestedQuestions) {
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

// --- "Safari did not close" is shown: the sequence has ended ---

TEST_F(NestedLoops, sortsOnceIfSafariQuitsWhileTheFailureIsShown) {
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

TEST_F(NestedLoops, showsTheFailureOnceHoweverLongItStaysOpen) {
  startSafari({.quitsAfter = std::nullopt});
  controller_->closeSortReopen(false);
  machine_.userInterface.willAnswer(0, [&] { machine_.loop.advance(10min); });
  machine_.loop.advance(45s);
  EXPECT_EQ(machine_.userInterface.alerts().size(), 1U);
}

// --- Unattended sorts show no dialogs, so nothing is nested in them ---

TEST_F(NestedLoops, unattendedSortPrintsWhileADialogIsOpen) {
  startSafari();
  whileTheQuestionIsOpen(cancel, [&] {
    advanceToTheScheduledTime();
    machine_.loop.advance(2s);
    EXPECT_FALSE(automatic);
  });
  EXPECT_EQ(machine_.output.text(), "Bookmarks sorted: " + sortedMessage() + "\n");
  EXPECT_EQ(machine_.userInterface.alerts().size(), 1U);
}

}  // namespace
