// Updates: the two menu items, the reminder, and the relaunch that waits for a sort in progress.
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

class UpdateMenu : public ControllerTest {
 protected:
  UpdateMenu() { launch(); }

  VirtualMenuItem& check() const { return dynamic_cast<VirtualMenuItem&>(*controller_->updateMenuItem); }
  VirtualMenuItem& automatic() const { return dynamic_cast<VirtualMenuItem&>(*controller_->automaticUpdateMenuItem); }
  VirtualStatusItem& item() const { return *machine_.screen.statusItem(); }

  void expectReminder(bool isShown) const {
    EXPECT_EQ(item().toolTip(), isShown ? "Quillery — update available" : "Quillery");
    EXPECT_EQ(check().title(), isShown ? "Update Available…" : "Check for Updates…");
  }
};

TEST_F(UpdateMenu, startsTheUpdaterWithTheControllerAsDelegate) {
  EXPECT_EQ(machine_.updater.delegate().lock(), controller_);
  EXPECT_EQ(machine_.journal.count("start updater"), 1);
}

TEST_F(UpdateMenu, checksForUpdatesWithEitherTitle) {
  check().choose();
  controller_->standardUserDriverWillHandleShowingUpdate(false);
  check().choose();
  EXPECT_EQ(machine_.journal.count("check for updates"), 2);
}

TEST_F(UpdateMenu, announcesScheduledUpdatesItselfInEveryCase) {
  const auto delegate = machine_.updater.delegate().lock();
  EXPECT_TRUE(delegate->supportsGentleScheduledUpdateReminders());
  for (const bool inImmediateFocus : {false, true})
    EXPECT_FALSE(delegate->standardUserDriverShouldHandleShowingScheduledUpdate(inImmediateFocus)) << inImmediateFocus;
}

TEST_F(UpdateMenu, showsWhetherUpdatesAreCheckedAutomatically) {
  EXPECT_TRUE(automatic().isOn());
  machine_.updater.fixAutomatic(false);
  launch();
  EXPECT_FALSE(automatic().isOn());
}

TEST_F(UpdateMenu, togglingTwiceRestoresTheFirstState) {
  automatic().choose();
  EXPECT_FALSE(automatic().isOn());
  EXPECT_FALSE(machine_.updater.automaticallyChecksForUpdates());
  automatic().choose();
  EXPECT_TRUE(automatic().isOn());
  EXPECT_TRUE(machine_.updater.automaticallyChecksForUpdates());
}

TEST_F(UpdateMenu, showsTheUpdatersStateAfterAToggle) {
  machine_.updater.fixAutomatic(true);
  automatic().choose();
  EXPECT_TRUE(automatic().isOn()) << "the state is read back";
}

TEST_F(UpdateMenu, isEnabledExactlyWhileTheUpdaterCanCheck) {
  EXPECT_TRUE(check().isEnabled());
  machine_.updater.setCanCheck(false);
  EXPECT_FALSE(check().isEnabled());
  machine_.updater.setCanCheck(true);
  EXPECT_TRUE(check().isEnabled());
}

TEST_F(UpdateMenu, isDisabledAtLaunchIfTheUpdaterCannotCheck) {
  machine_.updater.setCanCheck(false);
  launch();
  EXPECT_FALSE(check().isEnabled());
}

TEST_F(UpdateMenu, ignoresTheUpdaterAfterTheControllerIsGone) {
  const auto observation = controller_->updateObservation;
  const auto item = controller_->updateMenuItem;
  controller_.reset();
  noted();
  machine_.updater.setCanCheck(false);
  EXPECT_THAT(noted(), IsEmpty());
}

TEST_F(UpdateMenu, supportsGentleReminders) { EXPECT_TRUE(controller_->supportsGentleScheduledUpdateReminders()); }

TEST_F(UpdateMenu, remindsOfAnUpdateFromAScheduledCheck) {
  expectReminder(false);
  controller_->standardUserDriverWillHandleShowingUpdate(false);
  expectReminder(true);
  EXPECT_EQ(item().appearsDisabled(), false);
  EXPECT_FALSE(controller_->updateInstallPending);
}

TEST_F(UpdateMenu, doesNotRemindAfterAUserInitiatedCheck) {
  noted();
  controller_->standardUserDriverWillHandleShowingUpdate(true);
  EXPECT_THAT(noted(), IsEmpty());
  expectReminder(false);
}

TEST_F(UpdateMenu, clearsTheReminderOnUserAttention) {
  controller_->standardUserDriverWillHandleShowingUpdate(false);
  controller_->standardUserDriverDidReceiveUserAttention();
  expectReminder(false);
}

TEST_F(UpdateMenu, clearsTheReminderAtTheEndOfTheSession) {
  controller_->standardUserDriverWillHandleShowingUpdate(false);
  controller_->standardUserDriverWillFinishUpdateSession();
  expectReminder(false);
}

TEST_F(UpdateMenu, keepsTheReminderWhenARelaunchIsRequested) {
  controller_->standardUserDriverWillHandleShowingUpdate(false);
  controller_->shouldPostponeRelaunch([] {});
  expectReminder(true);
}

TEST_F(UpdateInstallation, pollsFourTimesASecond) { EXPECT_EQ(updatePollInterval, 250ms); }

TEST_F(UpdateInstallation, isNotPostponedWhileNoSortRuns) {
  EXPECT_FALSE(askToRelaunch());
  EXPECT_TRUE(controller_->updateInstallPending);
  EXPECT_EQ(controller_->updateWaitTimer, nullptr);
  EXPECT_THAT(noted(), IsEmpty());
  machine_.loop.advance(10s);
  EXPECT_EQ(installations_, 0) << "the updater relaunches by itself";
}

TEST_F(UpdateInstallation, blocksEverySortUntilTheSessionEnds) {
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

TEST_F(UpdateInstallation, waitsForTheSequenceAndTheReopenedSafari) {
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

TEST_F(UpdateInstallation, invalidatesThenClearsItsTimerBeforeItInstalls) {
  controller_->busy = true;
  std::shared_ptr<Timer> timer;
  EXPECT_TRUE(controller_->shouldPostponeRelaunch([&] {
    ++installations_;
    EXPECT_FALSE(timer->isValid());
    EXPECT_EQ(controller_->updateWaitTimer, nullptr);
  }));
  timer = controller_->updateWaitTimer;
  ASSERT_NE(timer, nullptr);
  controller_->busy = false;
  machine_.journal.before("invalidate", [&](const std::string&) {
    EXPECT_EQ(controller_->updateWaitTimer, timer) << "cleared only after the invalidation";
  });
  machine_.loop.advance(250ms);
  EXPECT_EQ(installations_, 1);
  EXPECT_EQ(machine_.journal.count("invalidate"), 1);
}

TEST_F(UpdateInstallation, staysPendingAfterTheUsersAttention) {
  askToRelaunch();
  controller_->standardUserDriverDidReceiveUserAttention();
  EXPECT_TRUE(controller_->updateInstallPending);
}

TEST_F(UpdateInstallation, keepsWaitingAfterTheUsersAttention) {
  waitForSafari({.quitsAfter = 2s});
  askToRelaunch();
  controller_->standardUserDriverDidReceiveUserAttention();
  EXPECT_TRUE(controller_->updateInstallPending);
  machine_.loop.advance(3s);
  EXPECT_EQ(installations_, 1);
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

TEST_F(UpdateInstallation, endsASessionWithoutARelaunch) {
  controller_->standardUserDriverWillFinishUpdateSession();
  EXPECT_FALSE(controller_->updateInstallPending);
  EXPECT_THAT(noted(), ElementsAre("tool tip Quillery", "title Check for Updates…"));
}

TEST_F(UpdateInstallation, isNeverInstalledAfterTheControllerIsGone) {
  waitForSafari({.quitsAfter = 2s});
  askToRelaunch();
  controller_.reset();
  machine_.loop.advance(10s);
  EXPECT_EQ(installations_, 0);
  EXPECT_EQ(machine_.loop.armedTimers(), 0);
}

}  // namespace
