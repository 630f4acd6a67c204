// An update that wants to relaunch the program waits for a sort in progress, and no sort begins while it waits.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <string>

#include "tests/support/controller_test.h"

namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::IsEmpty;

class UpdateInstallation : public ControllerTest {
 protected:
  UpdateInstallation() { launch(); }

  bool askToRelaunch() {
    return controller_->shouldPostponeRelaunch([this] { ++installations_; });
  }
  void waitForSafari(const QuitBehavior& behavior) {
    startSafari(behavior);
    controller_->closeSortReopen(true);
    noted();
  }

  int installations_ = 0;
};

TEST_F(UpdateInstallation, looksEveryQuarterOfASecond) { EXPECT_EQ(updatePollInterval, 250ms); }

TEST_F(UpdateInstallation, isNotPostponedWhileNoSortRuns) {
  EXPECT_FALSE(askToRelaunch());
  EXPECT_TRUE(controller_->updateInstallPending);
  EXPECT_EQ(controller_->updateWaitTimer, nullptr);
  EXPECT_THAT(noted(), IsEmpty());
  machine_.loop.advance(10s);
  EXPECT_EQ(installations_, 0) << "who was not postponed goes on by itself";
}

TEST_F(UpdateInstallation, keepsEverySortFromStartingUntilTheSessionEnds) {
  storeDaily(9, 30);
  controller_->scheduleDaily();
  askToRelaunch();
  noted();
  controller_->sortNow();
  controller_->tick();
  controller_->closeSortReopen(false);
  EXPECT_THAT(noted(), IsEmpty());
  machine_.loop.advanceTo(utc("2026-09-21 09:30:00"));
  EXPECT_EQ(sorts(), 0);
  controller_->standardUserDriverWillFinishUpdateSession();
  EXPECT_FALSE(controller_->updateInstallPending);
  controller_->tick();
  EXPECT_EQ(sorts(), 1);
}

TEST_F(UpdateInstallation, waitsForTheSequenceInProgressAndTheReopeningOfSafari) {
  waitForSafari({.quitsAfter = 2s});
  EXPECT_TRUE(askToRelaunch());
  EXPECT_TRUE(controller_->updateInstallPending);
  EXPECT_THAT(noted(), ElementsAre("timer every 250 ms"));
  machine_.loop.advance(2s - 1ms);
  EXPECT_EQ(installations_, 0);
  machine_.journal.after("open", [&](const std::string&) { EXPECT_EQ(installations_, 0); });
  machine_.loop.advance(250ms);
  EXPECT_EQ(sorts(), 1);
  EXPECT_EQ(machine_.journal.count("open"), 1);
  EXPECT_EQ(installations_, 1);
  EXPECT_EQ(controller_->updateWaitTimer, nullptr);
  machine_.loop.advance(10s);
  EXPECT_EQ(installations_, 1) << "once";
  EXPECT_TRUE(controller_->updateInstallPending) << "until the session ends";
}

TEST_F(UpdateInstallation, waitsForASequenceThatGivesUp) {
  waitForSafari({.quitsAfter = std::nullopt});
  EXPECT_TRUE(askToRelaunch());
  machine_.loop.advance(45s - 1ms);
  EXPECT_EQ(installations_, 0);
  machine_.loop.advance(1ms + 250ms);
  EXPECT_EQ(installations_, 1);
}

TEST_F(UpdateInstallation, isNeverInstalledIfTheSessionEndsBeforeTheSort) {
  waitForSafari({.quitsAfter = 2s});
  askToRelaunch();
  const auto timer = controller_->updateWaitTimer;
  controller_->standardUserDriverWillFinishUpdateSession();
  EXPECT_FALSE(timer->isValid());
  EXPECT_EQ(controller_->updateWaitTimer, nullptr);
  EXPECT_FALSE(controller_->updateInstallPending);
  machine_.loop.advance(10s);
  EXPECT_EQ(installations_, 0);
  EXPECT_EQ(sorts(), 1);
}

TEST_F(UpdateInstallation, mayEndASessionThatNeverAsked) {
  controller_->standardUserDriverWillFinishUpdateSession();
  EXPECT_FALSE(controller_->updateInstallPending);
  EXPECT_THAT(noted(), IsEmpty());
}

TEST_F(UpdateInstallation, isNeverInstalledAfterTheControllersEnd) {
  waitForSafari({.quitsAfter = 2s});
  askToRelaunch();
  controller_.reset();
  machine_.loop.advance(10s);
  EXPECT_EQ(installations_, 0);
  EXPECT_EQ(machine_.loop.armedTimers(), 0);
}

}  // namespace
