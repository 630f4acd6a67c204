// The timer of the scheduled sort: when it is armed, when it fires, and when a late firing is skipped.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <string>
#include <vector>

#include "tests/support/controller_test.h"

namespace {

using namespace std::chrono_literals;
using testing::Each;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;

// The tests start on Monday, 2026-09-21, 08:00 UTC.
class DailyTimer : public ControllerTest {
 protected:
  DailyTimer() { launch(); }

  // Arms the timer for today at 09:30.
  void arm(const std::vector<int>& days = {1, 2, 3, 4, 5, 6, 7}) {
    storeDaily(9, 30, days);
    controller_->scheduleDaily();
    noted();
  }
  // Lets the timer fire this much too late, as if the main thread were occupied.
  void fireLate(VirtualMainLoop::Duration lateness) {
    machine_.loop.occupy(utc("2026-09-21 09:30:00") - machine_.loop.now() + lateness);
    machine_.loop.run();
  }
};

TEST_F(DailyTimer, isArmedForTheNextOccurrence) {
  storeDaily(9, 30);
  controller_->scheduleDaily();
  EXPECT_THAT(noted(), ElementsAre("timer at 2026-09-21 09:30:00"));
  EXPECT_TRUE(controller_->dailyTimer->isValid());
}

TEST_F(DailyTimer, isArmedForTodayWithinTheLastSecondBefore) {
  machine_.loop.setClock(utc("2026-09-21 09:29:59") + 500ms);
  storeDaily(9, 30);
  controller_->scheduleDaily();
  EXPECT_EQ(nextSort(), "2026-09-21 09:30:00");
}

TEST_F(DailyTimer, isArmedByScheduleAsWell) {
  storeDaily(9, 30);
  controller_->schedule();
  EXPECT_EQ(nextSort(), "2026-09-21 09:30:00");
}

TEST_F(DailyTimer, isArmedInTheUsersTimeZone) {
  machine_.calendars.moveTo("America/New_York");
  arm();
  EXPECT_EQ(nextSort(), "2026-09-21 13:30:00");
}

TEST_F(DailyTimer, armedAgainReplacesTheEarlierTimer) {
  arm();
  for (int time = 0; time < 3; ++time) controller_->scheduleDaily();
  EXPECT_EQ(machine_.loop.armedTimers(), 1);
  EXPECT_THAT(noted(), ElementsAre("invalidate at 2026-09-21 09:30:00", "timer at 2026-09-21 09:30:00",
                                   "invalidate at 2026-09-21 09:30:00", "timer at 2026-09-21 09:30:00",
                                   "invalidate at 2026-09-21 09:30:00", "timer at 2026-09-21 09:30:00"));
}

TEST_F(DailyTimer, isRemovedIfTheScheduleIsOff) {
  arm();
  machine_.defaults.put("dailyEnabled", false);
  controller_->scheduleDaily();
  EXPECT_EQ(controller_->dailyTimer, nullptr);
  EXPECT_EQ(machine_.loop.armedTimers(), 0);
  EXPECT_THAT(noted(), ElementsAre("invalidate at 2026-09-21 09:30:00"));
}

TEST_F(DailyTimer, isRemovedIfSortingIsStopped) {
  arm();
  controller_->enabled = false;
  controller_->scheduleDaily();
  EXPECT_EQ(controller_->dailyTimer, nullptr);
  EXPECT_EQ(machine_.loop.armedTimers(), 0);
}

TEST_F(DailyTimer, isNotArmedIfNothingIsStored) {
  controller_->scheduleDaily();
  EXPECT_EQ(controller_->dailyTimer, nullptr);
  EXPECT_THAT(noted(), IsEmpty());
}

TEST_F(DailyTimer, isNotArmedOnAnEmptyListOfDays) {
  arm({});
  EXPECT_EQ(controller_->dailyTimer, nullptr);
}

TEST_F(DailyTimer, isNotArmedIfNoStoredDayIsValid) {
  arm({0, 8, -1});
  EXPECT_EQ(controller_->dailyTimer, nullptr);
}

TEST_F(DailyTimer, usesEveryDayIfNoDaysAreStored) {
  machine_.defaults.put("dailyEnabled", true);
  controller_->scheduleDaily();
  EXPECT_EQ(nextSort(), "2026-09-22 00:00:00") << "midnight is the default time";
}

TEST_F(DailyTimer, isNotArmedForATimeOutOfRange) {
  storeDaily(25, 0);
  controller_->scheduleDaily();
  EXPECT_EQ(nextSort(), "none");
  storeDaily(9, -1);
  controller_->scheduleDaily();
  EXPECT_EQ(nextSort(), "none");
  EXPECT_THAT(noted(), IsEmpty()) << "nothing is reported";
}

TEST_F(DailyTimer, convertsSettingsOfTheWrongType) {
  machine_.defaults.put("dailyEnabled", u"YES");
  machine_.defaults.put("dailyHour", u"9 o'clock");
  machine_.defaults.put("dailyMinute", 30.9);
  controller_->scheduleDaily();
  EXPECT_EQ(nextSort(), "2026-09-21 09:30:00");
}

TEST_F(DailyTimer, onTimeRunsTheSortThenArmsTheNext) {
  arm();
  machine_.loop.advanceTo(utc("2026-09-21 09:29:59"));
  EXPECT_THAT(noted(), IsEmpty());
  machine_.loop.advance(1s);
  EXPECT_EQ(noted(), (Entries{"read " + bookmarks} + unattendedSort() + Entries{"timer at 2026-09-22 09:30:00"}));
  EXPECT_FALSE(controller_->busy);
}

TEST_F(DailyTimer, onTimeArmsTheNextBeforeSafariHasQuit) {
  const int process = startSafari();
  arm();
  machine_.loop.advanceTo(utc("2026-09-21 09:30:00"));
  EXPECT_THAT(noted(), ElementsAre("read " + bookmarks, "quit " + std::to_string(process), "timer every 250 ms",
                                   "timer at 2026-09-22 09:30:00"));
  EXPECT_TRUE(controller_->busy);
}

TEST_F(DailyTimer, firesDayAfterDay) {
  arm();
  for (int day = 0; day < 3; ++day) {
    putUnsortedBookmarks();
    machine_.loop.advance(24h);
    EXPECT_EQ(sorts(), day + 1);
  }
  EXPECT_EQ(machine_.loop.armedTimers(), 1);
}

TEST_F(DailyTimer, runsASortThatIs89SecondsLate) {
  arm();
  fireLate(89s);
  EXPECT_EQ(sorts(), 1);
  EXPECT_EQ(nextSort(), "2026-09-22 09:30:00");
}

TEST_F(DailyTimer, runsASortThatIsJustUnder90SecondsLate) {
  arm();
  fireLate(90s - 1ms);
  EXPECT_EQ(sorts(), 1);
}

TEST_F(DailyTimer, skipsASortThatIs90SecondsLate) {
  arm();
  fireLate(90s);
  EXPECT_EQ(sorts(), 0);
  EXPECT_THAT(noted(), ElementsAre("timer at 2026-09-22 09:30:00")) << "nothing is read or reported";
}

TEST_F(DailyTimer, hasALatenessLimitOfNinetySeconds) { EXPECT_EQ(latenessLimit, 90s); }

TEST_F(DailyTimer, onTimeWhileStoppedSortsNothingAndLeavesNoTimer) {
  arm();
  controller_->enabled = false;  // without stop(), which would invalidate the timer
  machine_.loop.advanceTo(utc("2026-09-21 09:30:00"));
  EXPECT_THAT(noted(), IsEmpty());
  EXPECT_EQ(controller_->dailyTimer, nullptr);
}

TEST_F(DailyTimer, onTimeWithoutAccessOnlyArmsTheNext) {
  arm();
  removeBookmarks();
  machine_.loop.advanceTo(utc("2026-09-21 09:30:00"));
  EXPECT_THAT(noted(), ElementsAre("read " + bookmarks, "timer at 2026-09-22 09:30:00"));
  EXPECT_TRUE(controller_->enabled);
  EXPECT_FALSE(controller_->needsAccess);
  EXPECT_FALSE(controller_->busy);
}

TEST_F(DailyTimer, onTimeWhileBusyOnlyArmsTheNext) {
  arm();
  controller_->busy = true;
  machine_.loop.advanceTo(utc("2026-09-21 09:30:00"));
  EXPECT_THAT(noted(), ElementsAre("timer at 2026-09-22 09:30:00"));
}

TEST_F(DailyTimer, onTimeWhileAnUpdateWaitsOnlyArmsTheNext) {
  arm();
  controller_->updateInstallPending = true;
  machine_.loop.advanceTo(utc("2026-09-21 09:30:00"));
  EXPECT_THAT(noted(), ElementsAre("timer at 2026-09-22 09:30:00"));
}

TEST_F(DailyTimer, doesNothingAfterTheControllerIsGone) {
  arm();
  controller_.reset();
  machine_.loop.advanceTo(utc("2026-09-21 09:30:00"));
  EXPECT_THAT(noted(), IsEmpty());
  EXPECT_EQ(machine_.loop.armedTimers(), 0);
}

// After a sleep, either the overdue timer or the wake notification comes first.
class Sleep : public DailyTimer, public testing::WithParamInterface<VirtualMainLoop::Place> {};
INSTANTIATE_TEST_SUITE_P(WithTheWake, Sleep,
                         testing::Values(VirtualMainLoop::Place::back, VirtualMainLoop::Place::front),
                         [](const auto& wake) {
                           return wake.param == VirtualMainLoop::Place::back ? "afterTheTimer" : "beforeTheTimer";
                         });

TEST_P(Sleep, skipsAMissedFridayAndArmsMonday) {
  machine_.loop.setClock(utc("2026-09-25 08:59:59"));
  arm({2, 3, 4, 5, 6});
  EXPECT_EQ(nextSort(), "2026-09-25 09:30:00");
  machine_.loop.advance(1s);
  machine_.sleep(1h, GetParam());
  machine_.loop.run();
  EXPECT_EQ(nextSort(), "2026-09-28 09:30:00");
  EXPECT_EQ(machine_.loop.armedTimers(), 1);
  EXPECT_EQ(sorts(), 0);
  EXPECT_THAT(noted(), Not(testing::Contains("read " + bookmarks))) << "missed sorts are skipped silently";
  machine_.loop.advanceTo(utc("2026-09-28 09:30:00"));
  EXPECT_EQ(sorts(), 1);
}

TEST_P(Sleep, endingAMinuteLateSortsOnlyIfTheTimerFiresFirst) {
  arm();
  machine_.sleep(91min, GetParam());
  machine_.loop.run();
  EXPECT_EQ(sorts(), GetParam() == VirtualMainLoop::Place::back ? 1 : 0) << "a timer 60 s late sorts";
  EXPECT_EQ(nextSort(), "2026-09-22 09:30:00");
}

TEST_P(Sleep, endingBeforeTheScheduledTimeChangesNothing) {
  arm();
  machine_.sleep(1h, GetParam());
  machine_.loop.run();
  EXPECT_EQ(nextSort(), "2026-09-21 09:30:00");
  machine_.loop.advance(30min);
  EXPECT_EQ(sorts(), 1);
}

TEST_P(Sleep, skipsEveryScheduledTimeItCovers) {
  arm();
  machine_.sleep(73h, GetParam());
  machine_.loop.run();
  EXPECT_EQ(sorts(), 0);
  EXPECT_EQ(nextSort(), "2026-09-24 09:30:00");
}

TEST_F(DailyTimer, isNotArmedByAWakeWhileStopped) {
  arm();
  controller_->stop();
  machine_.sleep(1h);
  machine_.loop.run();
  EXPECT_EQ(controller_->dailyTimer, nullptr);
  EXPECT_EQ(machine_.loop.armedTimers(), 0);
}

TEST_F(DailyTimer, isNotArmedByAWakeAfterTheControllerIsGone) {
  arm();
  const auto observers = controller_->observers;  // as if the system were just calling them
  controller_.reset();
  machine_.sleep(1h);
  machine_.loop.run();
  EXPECT_THAT(noted(), IsEmpty());
}

TEST_F(DailyTimer, isInvalidatedButKeptByStop) {
  arm();
  const auto timer = controller_->dailyTimer;
  controller_->stop();
  EXPECT_FALSE(timer->isValid());
  EXPECT_EQ(controller_->dailyTimer, timer);
}

TEST_F(DailyTimer, isInvalidatedButKeptByPauseForAccess) {
  arm();
  const auto timer = controller_->dailyTimer;
  controller_->pauseForAccess();
  EXPECT_FALSE(timer->isValid());
  EXPECT_EQ(controller_->dailyTimer, timer);
}

TEST_F(DailyTimer, isReplacedByTheNextArmingOnceInvalidated) {
  arm();
  const auto timer = controller_->dailyTimer;
  controller_->stop();
  controller_->start();
  EXPECT_NE(controller_->dailyTimer, timer);
  EXPECT_EQ(nextSort(), "2026-09-21 09:30:00");
  EXPECT_EQ(machine_.loop.armedTimers(), 1);
}

TEST_F(DailyTimer, firesWhileADialogIsOpen) {
  arm();
  machine_.userInterface.willAnswer(0, [&] { machine_.loop.advanceTo(utc("2026-09-21 09:30:00")); });
  machine_.userInterface.runModal({"Any dialog", "", {}});
  EXPECT_EQ(sorts(), 1);
}

TEST_F(DailyTimer, keepsItsInstantWhenTheTimeZoneChanges) {
  arm();
  machine_.calendars.moveTo("Asia/Tokyo");
  machine_.loop.advanceTo(utc("2026-09-21 09:30:00"));
  EXPECT_EQ(sorts(), 1);
  EXPECT_EQ(nextSort(), "2026-09-22 00:30:00") << "the next one is computed in the new zone";
}

TEST_F(DailyTimer, followsTheWallClockWhenItIsSet) {
  arm();
  machine_.loop.setClock(utc("2026-09-21 09:29:30"));
  machine_.loop.advance(29s);
  EXPECT_EQ(sorts(), 0);
  machine_.loop.advance(1s);
  EXPECT_EQ(sorts(), 1);
}

TEST_F(DailyTimer, isSkippedIfTheClockIsSetPastItsTime) {
  arm();
  machine_.loop.setClock(utc("2026-09-21 11:00:00"));
  machine_.loop.run();
  EXPECT_EQ(sorts(), 0);
  EXPECT_EQ(nextSort(), "2026-09-22 09:30:00");
}

TEST_F(DailyTimer, firesOnceInARepeatedHour) {
  machine_.calendars.moveTo("America/New_York");
  machine_.loop.setClock(utc("2026-11-01 04:00:00"));  // midnight in New York; 01:30 occurs twice
  storeDaily(1, 30);
  controller_->scheduleDaily();
  EXPECT_EQ(nextSort(), "2026-11-01 05:30:00");
  machine_.loop.advanceTo(utc("2026-11-01 05:30:00"));
  EXPECT_EQ(nextSort(), "2026-11-02 06:30:00");
}

TEST_F(DailyTimer, reportsNothingWhenItSkips) {
  arm();
  fireLate(2h);
  machine_.sleep(48h);
  machine_.loop.run();
  EXPECT_THAT(noted(), Each(Not(StartsWith("alert"))));
  EXPECT_EQ(machine_.output.text(), "");
}

}  // namespace
