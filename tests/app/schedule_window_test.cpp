// The schedule window: its controls and their places, when they are enabled, and what its buttons do.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <string>
#include <vector>

#include "schedule/typed_defaults.h"
#include "tests/support/controller_test.h"

namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::IsEmpty;

// The tests start on Monday, 2026-09-21, 08:00 UTC.
class ScheduleWindow : public ControllerTest {
 protected:
  ScheduleWindow() { launch(); }

  void open() {
    controller_->showSchedule();
    noted();
  }
  VirtualWindow& window() const { return machine_.screen.window("Schedule"); }
  VirtualControl& control(const std::string& text) const { return window().control(text); }
  VirtualControl& picker() const { return window().only("time picker"); }
  VirtualControl& presets() const { return window().only("pop-up"); }

  std::vector<int> checkedDays() const {
    std::vector<int> days;
    for (const auto& button : controller_->dayButtons)
      if (button->isOn()) days.push_back(button->tag());
    return days;
  }
  // How many of the seven check boxes are enabled.
  int enabledDays() const {
    int count = 0;
    for (const char* day : {"Sun", "Mon", "Tue", "Wed", "Thu", "Fri", "Sat"})
      count += control(day).isEnabledNow ? 1 : 0;
    return count;
  }
};

// --- The window ---

TEST_F(ScheduleWindow, hasItsSizeAndTitleAndNoCloseBox) {
  open();
  EXPECT_EQ(window().description().width, 530);
  EXPECT_EQ(window().description().height, 370);
  EXPECT_EQ(window().description().title, "Schedule");
  EXPECT_FALSE(window().description().isClosable);
  window().close();
  EXPECT_TRUE(window().isVisible());
}

TEST_F(ScheduleWindow, isBuiltThenCentredThenShownInFront) {
  controller_->showSchedule();
  EXPECT_THAT(noted(), ElementsAre("window Schedule", "center Schedule", "show Schedule", "activate"));
  EXPECT_EQ(controller_->settingsWindow.get(), &window());
}

TEST_F(ScheduleWindow, hasItsControlsInTheirFramesWithTheirKeys) {
  open();
  const std::vector<WantedControl> wanted = {
      {"check box", "Sort when Safari quits", {24, 320, 470, 26}},
      {"check box", "Enable scheduled sorting", {24, 282, 470, 26}},
      {"time picker", "", {24, 238, 160, 30}},
      {"pop-up", "", {204, 238, 290, 30}},
      {"check box", "Sun", {24, 190, 68, 26}},
      {"check box", "Mon", {93, 190, 68, 26}},
      {"check box", "Tue", {162, 190, 68, 26}},
      {"check box", "Wed", {231, 190, 68, 26}},
      {"check box", "Thu", {300, 190, 68, 26}},
      {"check box", "Fri", {369, 190, 68, 26}},
      {"check box", "Sat", {438, 190, 68, 26}},
      {"label",
       "Scheduled sorts quit Safari normally, back up and sort bookmarks, then reopen Safari if it was running. Safari "
       "is never force-quit.\n\nThe Mac must be awake and sorting started. Missed schedules are skipped. Stop pauses "
       "both automatic options.",
       {24, 64, 482, 106}},
      {"push button", "Save", {412, 16, 94, 32}, KeyEquivalent::returnKey},
      {"push button", "Cancel", {310, 16, 94, 32}, KeyEquivalent::escape},
  };
  expectControls(window(), wanted);
  EXPECT_TRUE(window().only("label").label.wraps);
}

TEST_F(ScheduleWindow, offersThePresetsInTheirOrder) {
  open();
  EXPECT_THAT(presets().items, ElementsAre("Daily", "Weekdays", "Weekends", "Selected days"));
}

TEST_F(ScheduleWindow, tellsScreenReadersWhatTheTitlesDoNotSay) {
  open();
  EXPECT_EQ(window().only("time picker").accessibilityLabel, "Time of the scheduled sort");
  EXPECT_EQ(presets().accessibilityLabel, "Days of the scheduled sort");
  std::vector<std::string> days;
  for (const char* title : {"Sun", "Mon", "Tue", "Wed", "Thu", "Fri", "Sat"})
    days.push_back(control(title).accessibilityLabel);
  EXPECT_THAT(days, ElementsAre("Sunday", "Monday", "Tuesday", "Wednesday", "Thursday", "Friday", "Saturday"));
}

TEST_F(ScheduleWindow, numbersTheDaysFromSunday) {
  open();
  for (int day = 0; day < 7; ++day)
    EXPECT_EQ(controller_->dayButtons.at(static_cast<std::size_t>(day))->tag(), day + 1);
  EXPECT_EQ(control("Sun").number, 1);
  EXPECT_EQ(control("Sat").number, 7);
}

// --- What it shows when it opens ---

TEST_F(ScheduleWindow, showsTheDefaultsIfNothingIsStored) {
  open();
  EXPECT_TRUE(control("Sort when Safari quits").isOn());
  EXPECT_FALSE(control("Enable scheduled sorting").isOn());
  EXPECT_EQ(utcText(picker().date), "2026-09-21 00:00:00");
  EXPECT_EQ(presets().chosen, 0U);
  EXPECT_THAT(checkedDays(), ElementsAre(1, 2, 3, 4, 5, 6, 7));
}

TEST_F(ScheduleWindow, showsTheStoredSettings) {
  storeDaily(21, 5, {1, 7});
  machine_.defaults.put("sortOnSafariQuit", false);
  open();
  EXPECT_FALSE(control("Sort when Safari quits").isOn());
  EXPECT_TRUE(control("Enable scheduled sorting").isOn());
  EXPECT_EQ(utcText(picker().date), "2026-09-21 21:05:00");
  EXPECT_EQ(presets().chosen, 2U);
  EXPECT_THAT(checkedDays(), ElementsAre(1, 7));
}

TEST_F(ScheduleWindow, showsStoredWeekendsWithTheDaysDisabled) {
  storeDaily(9, 30, {1, 7});
  open();
  EXPECT_EQ(presets().items.at(presets().chosen), "Weekends");
  EXPECT_EQ(enabledDays(), 0);
}

TEST_F(ScheduleWindow, showsTheStoredTimeOfTodayInTheUsersCalendar) {
  machine_.calendars.moveTo("Asia/Tokyo");
  machine_.loop.setClock(utc("2026-09-21 20:00:00"));  // 05:00 on the 22nd in Tokyo
  storeDaily(9, 30);
  open();
  EXPECT_EQ(utcText(picker().date), "2026-09-22 00:30:00");
}

TEST_F(ScheduleWindow, showsTheEndOfAGapForATimeInTheGap) {
  machine_.calendars.moveTo("America/New_York");
  machine_.loop.setClock(utc("2026-03-08 12:00:00"));
  storeDaily(2, 30);
  open();
  EXPECT_EQ(utcText(picker().date), "2026-03-08 07:00:00");
}

TEST_F(ScheduleWindow, showsMidnightForATimeOutOfRange) {
  storeDaily(99, 99);
  open();
  EXPECT_EQ(utcText(picker().date), "2026-09-21 00:00:00");
}

// --- What is enabled ---

TEST_F(ScheduleWindow, disablesTheScheduleControlsIfTheScheduleIsOff) {
  storeDaily(9, 30, {2, 4});
  machine_.defaults.put("dailyEnabled", false);
  open();
  EXPECT_FALSE(picker().isEnabledNow);
  EXPECT_FALSE(presets().isEnabledNow);
  EXPECT_EQ(enabledDays(), 0);
  EXPECT_TRUE(control("Sort when Safari quits").isEnabledNow);
  EXPECT_TRUE(control("Enable scheduled sorting").isEnabledNow);
}

TEST_F(ScheduleWindow, enablesAllControlsForSelectedDays) {
  storeDaily(9, 30, {2, 4});
  open();
  EXPECT_TRUE(picker().isEnabledNow);
  EXPECT_TRUE(presets().isEnabledNow);
  EXPECT_EQ(enabledDays(), 7);
}

TEST_F(ScheduleWindow, enablesAllButTheDaysForAPreset) {
  storeDaily(9, 30);
  open();
  EXPECT_TRUE(picker().isEnabledNow);
  EXPECT_TRUE(presets().isEnabledNow);
  EXPECT_EQ(enabledDays(), 0);
}

TEST_F(ScheduleWindow, scheduleCheckBoxEnablesAndDisablesTheControls) {
  machine_.defaults.put("scheduleDays", numberList({2}));
  open();
  window().press("Enable scheduled sorting");
  EXPECT_TRUE(picker().isEnabledNow);
  EXPECT_TRUE(presets().isEnabledNow);
  EXPECT_EQ(enabledDays(), 7);
  window().press("Enable scheduled sorting");
  EXPECT_FALSE(picker().isEnabledNow);
  EXPECT_FALSE(presets().isEnabledNow);
  EXPECT_EQ(enabledDays(), 0);
}

// --- Presets ---

TEST_F(ScheduleWindow, checksTheDaysOfAChosenPreset) {
  storeDaily(9, 30);
  open();
  window().choose("Weekdays");
  EXPECT_THAT(checkedDays(), ElementsAre(2, 3, 4, 5, 6));
  window().choose("Weekends");
  EXPECT_THAT(checkedDays(), ElementsAre(1, 7));
  window().choose("Daily");
  EXPECT_THAT(checkedDays(), ElementsAre(1, 2, 3, 4, 5, 6, 7));
}

TEST_F(ScheduleWindow, selectedDaysKeepsTheDaysAndEnablesThem) {
  storeDaily(9, 30);
  open();
  window().choose("Weekdays");
  EXPECT_EQ(enabledDays(), 0);
  window().choose("Selected days");
  EXPECT_THAT(checkedDays(), ElementsAre(2, 3, 4, 5, 6));
  EXPECT_EQ(enabledDays(), 7);
}

TEST_F(ScheduleWindow, checkingDaysKeepsThePreset) {
  storeDaily(9, 30, {2, 4});
  open();
  for (const char* day : {"Sun", "Tue", "Thu", "Fri", "Sat"}) window().press(day);
  EXPECT_THAT(checkedDays(), ElementsAre(1, 2, 3, 4, 5, 6, 7));
  EXPECT_EQ(presets().items.at(presets().chosen), "Selected days");
}

// --- Shown again ---

TEST_F(ScheduleWindow, showingItAgainKeepsTheUsersEdits) {
  open();
  window().press("Sort when Safari quits");
  machine_.defaults.put("dailyEnabled", true);
  controller_->showSchedule();
  EXPECT_THAT(noted(), ElementsAre("show Schedule", "activate"));
  EXPECT_FALSE(control("Sort when Safari quits").isOn());
  EXPECT_FALSE(control("Enable scheduled sorting").isOn()) << "the settings are not read again";
  EXPECT_EQ(machine_.screen.windows().size(), 1U);
}

TEST_F(ScheduleWindow, isRebuiltFromTheStoredSettingsAfterAClose) {
  open();
  window().press("Sort when Safari quits");
  window().press("Cancel");
  open();
  EXPECT_TRUE(control("Sort when Safari quits").isOn());
  EXPECT_EQ(machine_.screen.windows().size(), 2U);
  EXPECT_EQ(controller_->dayButtons.size(), 7U);
}

// --- Save and Cancel ---

TEST_F(ScheduleWindow, savesWhatItShows) {
  open();
  window().press("Sort when Safari quits");
  window().press("Enable scheduled sorting");
  window().choose("Selected days");
  for (const char* day : {"Sun", "Sat", "Fri"}) window().press(day);
  picker().setDateValue(utc("2026-09-21 18:45:00"));
  window().press("Save");
  EXPECT_EQ(noted(),
            (Entries{"set sortOnSafariQuit false", "set scheduleDays [2, 3, 4, 5]", "set dailyEnabled true",
                     "set dailyHour 18", "set dailyMinute 45", "hide Schedule", "timer at 2026-09-21 18:45:00"} +
             refreshed(runningTitle)));
  EXPECT_EQ(controller_->settingsWindow, nullptr);
}

TEST_F(ScheduleWindow, savesOnReturn) {
  open();
  window().press("Sort when Safari quits");
  window().pressKey(KeyEquivalent::returnKey);
  EXPECT_FALSE(controller_->sortOnQuit());
  EXPECT_FALSE(window().isVisible());
}

TEST_F(ScheduleWindow, savesTheValuesOfDisabledControlsToo) {
  storeDaily(9, 30, {3, 5});
  open();
  window().press("Enable scheduled sorting");
  window().press("Save");
  EXPECT_FALSE(booleanForKey("dailyEnabled"));
  EXPECT_EQ(integerForKey("dailyHour"), 9);
  EXPECT_EQ(integerForKey("dailyMinute"), 30);
  EXPECT_THAT(controller_->selectedDays(), ElementsAre(3, 5));
}

TEST_F(ScheduleWindow, escapeDiscardsEveryChange) {
  open();
  window().press("Sort when Safari quits");
  window().press("Enable scheduled sorting");
  window().pressKey(KeyEquivalent::escape);
  EXPECT_THAT(noted(), ElementsAre("hide Schedule"));
  EXPECT_TRUE(controller_->sortOnQuit());
  EXPECT_THAT(machine_.defaults.values(), IsEmpty());
  EXPECT_EQ(controller_->settingsWindow, nullptr);
}

TEST_F(ScheduleWindow, cancelLeavesTheTimerAlone) {
  storeDaily(9, 30);
  controller_->scheduleDaily();
  const auto timer = controller_->dailyTimer;
  open();
  window().press("Cancel");
  EXPECT_EQ(controller_->dailyTimer, timer);
  EXPECT_TRUE(timer->isValid());
}

TEST_F(ScheduleWindow, cancelWhileClosedDoesNothing) {
  controller_->cancelSchedule();
  EXPECT_THAT(noted(), IsEmpty());
}

TEST_F(ScheduleWindow, staysOpenWithItsEditsIfNoDayIsChecked) {
  storeDaily(9, 30, {2});
  open();
  window().press("Mon");
  window().press("Sort when Safari quits");
  machine_.userInterface.willAnswer(0);
  window().press("Save");
  EXPECT_THAT(noted(), ElementsAre("accessory", "activate", "alert Choose a day"));
  EXPECT_TRUE(window().isVisible());
  EXPECT_EQ(controller_->settingsWindow.get(), &window());
  EXPECT_FALSE(control("Sort when Safari quits").isOn());
  EXPECT_THAT(controller_->selectedDays(), ElementsAre(2)) << "the stored days stay";
}

TEST_F(ScheduleWindow, doesNothingAfterTheControllerIsGone) {
  open();
  VirtualWindow& orphan = window();
  controller_.reset();
  orphan.press("Save");
  orphan.press("Cancel");
  orphan.press("Enable scheduled sorting");
  EXPECT_THAT(noted(), IsEmpty());
}

}  // namespace
