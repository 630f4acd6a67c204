// The stored settings of the schedule, valid or not, and what a user may choose.
#include "schedule/schedule_settings.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "schedule/settings_keys.h"
#include "schedule/typed_defaults.h"
#include "tests/support/controller_test.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

const std::vector<int> everyDay = {1, 2, 3, 4, 5, 6, 7};

class ScheduleSettings : public ControllerTest {
 protected:
  ScheduleSettings() { launch(); }

  void putDays(const PlistValue& value) { machine_.defaults.put("scheduleDays", value); }
  void putSortOnQuit(const PlistValue& value) { machine_.defaults.put("sortOnSafariQuit", value); }

  // Weekdays at 09:30 UTC.
  ScheduleChoice weekdays() const { return {true, {2, 3, 4, 5, 6}, true, utc("2026-09-21 09:30:00")}; }
};

TEST_F(ScheduleSettings, haveTheirDefaultsIfNothingIsStored) {
  EXPECT_TRUE(controller_->sortOnQuit());
  EXPECT_FALSE(booleanForKey(settings_keys::dailyEnabled));
  EXPECT_EQ(integerForKey(settings_keys::dailyHour), 0);
  EXPECT_EQ(integerForKey(settings_keys::dailyMinute), 0);
  EXPECT_EQ(controller_->selectedDays(), everyDay);
  EXPECT_EQ(presetOf(controller_->selectedDays()), 0U);
  EXPECT_THAT(machine_.defaults.values(), IsEmpty()) << "nothing registers defaults";
}

TEST_F(ScheduleSettings, areStoredUnderTheirKeys) {
  EXPECT_STREQ(settings_keys::sortOnSafariQuit, "sortOnSafariQuit");
  EXPECT_STREQ(settings_keys::scheduleDays, "scheduleDays");
  EXPECT_STREQ(settings_keys::dailyEnabled, "dailyEnabled");
  EXPECT_STREQ(settings_keys::dailyHour, "dailyHour");
  EXPECT_STREQ(settings_keys::dailyMinute, "dailyMinute");
}

TEST_F(ScheduleSettings, returnTheStoredSortOnQuit) {
  putSortOnQuit(false);
  EXPECT_FALSE(controller_->sortOnQuit());
  putSortOnQuit(true);
  EXPECT_TRUE(controller_->sortOnQuit());
}

TEST_F(ScheduleSettings, takeSortOnQuitAsTrueIfTextIsStored) {
  putSortOnQuit(u"NO");
  EXPECT_TRUE(controller_->sortOnQuit());
}

TEST_F(ScheduleSettings, takeSortOnQuitAsTrueUnlessABooleanIsStored) {
  for (const PlistValue& value : {PlistValue(0), PlistValue(0.0), PlistValue(PlistDate{}), PlistValue(Bytes()),
                                  PlistValue::array({false}), PlistValue::dictionary({})}) {
    putSortOnQuit(value);
    EXPECT_TRUE(controller_->sortOnQuit()) << static_cast<int>(value.kind());
  }
  EXPECT_THAT(noted(), IsEmpty()) << "nothing is reported";
}

TEST_F(ScheduleSettings, returnTheStoredDaysUnchecked) {
  putDays(numberList({7, 1, 7, 0, 8, -3}));
  EXPECT_THAT(controller_->selectedDays(), ElementsAre(7, 1, 7, 0, 8, -3));
}

TEST_F(ScheduleSettings, takeADayBeyondTheRangeOfIntAsInvalid) {
  putDays(PlistValue::array({1LL << 33, -(1LL << 33)}));
  EXPECT_EQ(presetOf(controller_->selectedDays()), selectedDaysPreset);
  storeDaily(9, 30);
  putDays(PlistValue::array({(1LL << 32) + 2}));
  controller_->scheduleDaily();
  EXPECT_EQ(nextSort(), "none");
}

TEST_F(ScheduleSettings, keepAnEmptyListOfDaysEmpty) {
  putDays(PlistValue::array({}));
  EXPECT_THAT(controller_->selectedDays(), IsEmpty());
}

TEST_F(ScheduleSettings, takeTextInsteadOfDaysAsEveryDay) {
  putDays(PlistValue::array({u"2", u"3"}));
  EXPECT_EQ(controller_->selectedDays(), everyDay);
  putDays(u"2, 3");
  EXPECT_EQ(controller_->selectedDays(), everyDay);
}

TEST_F(ScheduleSettings, takeEveryDayUnlessAListOfIntegersIsStored) {
  for (const PlistValue& value :
       {PlistValue(2), PlistValue(true), PlistValue::dictionary({{u"2", 2}}), PlistValue::array({2, u"3"}),
        PlistValue::array({2, true}), PlistValue::array({2.0}), PlistValue::array({PlistValue::array({2})})}) {
    putDays(value);
    EXPECT_EQ(controller_->selectedDays(), everyDay) << static_cast<int>(value.kind());
  }
  EXPECT_THAT(noted(), IsEmpty()) << "nothing is reported";
}

TEST_F(ScheduleSettings, areReadOnEveryUse) {
  EXPECT_TRUE(controller_->sortOnQuit());
  putSortOnQuit(false);
  putDays(numberList({1}));
  EXPECT_FALSE(controller_->sortOnQuit());
  EXPECT_THAT(controller_->selectedDays(), ElementsAre(1));
}

TEST_F(ScheduleSettings, determineTheNextScheduledSort) {
  EXPECT_EQ(nextScheduledSort(machine_.loop.now()), std::nullopt) << "scheduling is off";
  storeDaily(9, 30, {3});
  EXPECT_EQ(nextScheduledSort(utc("2026-09-21 08:00:00")), utc("2026-09-22 09:30:00"));
  EXPECT_EQ(nextScheduledSort(utc("2026-09-22 09:30:00")), utc("2026-09-29 09:30:00"));
  putDays(PlistValue::array({}));
  EXPECT_EQ(nextScheduledSort(machine_.loop.now()), std::nullopt);
}

TEST(DayPresets, areDailyWeekdaysWeekendsAndSelectedDays) {
  const auto& presets = dayPresets();
  ASSERT_EQ(presets.size(), 4U);
  EXPECT_EQ(presets[0].title, "Daily");
  EXPECT_THAT(presets[0].days, ElementsAre(1, 2, 3, 4, 5, 6, 7));
  EXPECT_EQ(presets[1].title, "Weekdays");
  EXPECT_THAT(presets[1].days, ElementsAre(2, 3, 4, 5, 6));
  EXPECT_EQ(presets[2].title, "Weekends");
  EXPECT_THAT(presets[2].days, ElementsAre(1, 7));
  EXPECT_EQ(presets[3].title, "Selected days");
  EXPECT_THAT(presets[3].days, IsEmpty());
}

TEST(DayPresets, matchAsSetsInAnyOrderAndWithDuplicates) {
  EXPECT_EQ(presetOf({7, 6, 5, 4, 3, 2, 1}), 0U);
  EXPECT_EQ(presetOf({6, 2, 4, 3, 5, 2}), 1U);
  EXPECT_EQ(presetOf({7, 1}), 2U);
  EXPECT_EQ(presetOf({1, 7, 7}), 2U);
}

TEST(DayPresets, areSelectedDaysForAnyOtherSet) {
  EXPECT_EQ(presetOf({2, 3, 4, 5}), 3U);
  EXPECT_EQ(presetOf({1, 2, 3, 4, 5, 6, 7, 8}), 3U);
}

TEST(DayPresets, areSelectedDaysForNoDays) { EXPECT_EQ(presetOf({}), 3U); }

TEST_F(ScheduleSettings, areStoredBeforeTheWindowClosesAndTheTimerIsArmed) {
  saveSchedule(weekdays());
  EXPECT_EQ(noted(),
            (Entries{"set sortOnSafariQuit true", "set scheduleDays [2, 3, 4, 5, 6]", "set dailyEnabled true",
                     "set dailyHour 9", "set dailyMinute 30", "hide Schedule", "timer at 2026-09-21 09:30:00"} +
             refreshed(runningTitle)));
}

TEST_F(ScheduleSettings, areStoredWithTheirTypes) {
  saveSchedule(weekdays());
  const auto& stored = machine_.defaults.values();
  EXPECT_EQ(stored.at("sortOnSafariQuit"), PlistValue(true));
  EXPECT_EQ(stored.at("scheduleDays"), numberList({2, 3, 4, 5, 6}));
  EXPECT_EQ(stored.at("dailyEnabled"), PlistValue(true));
  EXPECT_EQ(stored.at("dailyHour"), PlistValue(9));
  EXPECT_EQ(stored.at("dailyMinute"), PlistValue(30));
  EXPECT_EQ(stored.size(), 5U);
}

TEST_F(ScheduleSettings, storeTheTimeInTheUsersCalendar) {
  machine_.calendars.moveTo("America/New_York");
  saveSchedule(weekdays());
  EXPECT_EQ(integerForKey("dailyHour"), 5) << "09:30 UTC";
  EXPECT_EQ(integerForKey("dailyMinute"), 30);
}

TEST_F(ScheduleSettings, areRefusedForAScheduleWithoutDays) {
  storeDaily(7, 15);
  controller_->scheduleDaily();
  const auto before = machine_.defaults.values();
  noted();
  machine_.userInterface.willAnswer(0);
  saveSchedule({false, {}, true, utc("2026-09-21 09:30:00")});
  EXPECT_THAT(noted(), ElementsAre("accessory", "activate", "alert Choose a day"));
  EXPECT_EQ(machine_.userInterface.alerts().at(0).informativeText, "Select at least one day for scheduled sorting.");
  EXPECT_EQ(machine_.defaults.values(), before);
  EXPECT_EQ(nextSort(), "2026-09-22 07:15:00");
}

TEST_F(ScheduleSettings, mayHaveNoDaysWithoutASchedule) {
  saveSchedule({true, {}, false, utc("2026-09-21 09:30:00")});
  EXPECT_EQ(machine_.defaults.values().at("scheduleDays"), PlistValue::array({}));
  EXPECT_THAT(controller_->selectedDays(), IsEmpty());
  EXPECT_EQ(nextSort(), "none");
}

TEST_F(ScheduleSettings, keepTimeAndDaysWhileTheScheduleIsOff) {
  saveSchedule({false, {3, 5}, false, utc("2026-09-21 22:45:00")});
  EXPECT_FALSE(booleanForKey("dailyEnabled"));
  EXPECT_FALSE(controller_->sortOnQuit());
  EXPECT_EQ(integerForKey("dailyHour"), 22);
  EXPECT_EQ(integerForKey("dailyMinute"), 45);
  EXPECT_THAT(controller_->selectedDays(), ElementsAre(3, 5));
}

TEST_F(ScheduleSettings, armNothingIfStoredWhileStopped) {
  controller_->stop();
  saveSchedule(weekdays());
  EXPECT_EQ(nextSort(), "none");
  EXPECT_EQ(status_->title(), stoppedTitle);
}

TEST_F(ScheduleSettings, removeTheTimerIfTheScheduleIsTurnedOff) {
  saveSchedule(weekdays());
  EXPECT_EQ(nextSort(), "2026-09-21 09:30:00");
  ScheduleChoice off = weekdays();
  off.isScheduled = false;
  saveSchedule(off);
  EXPECT_EQ(controller_->dailyTimer, nullptr);
  EXPECT_EQ(machine_.loop.armedTimers(), 0);
}

TEST_F(ScheduleSettings, storeWhetherSortingIsPaused) {
  EXPECT_FALSE(sortingIsPaused());
  machine_.defaults.put("sortingPaused", true);
  EXPECT_TRUE(sortingIsPaused());
  storeSortingPaused(false);
  EXPECT_FALSE(sortingIsPaused());
}

}  // namespace
