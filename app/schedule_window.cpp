// The window in which the user chooses when bookmarks are sorted automatically.
#include <algorithm>
#include <array>
#include <vector>

#include "app/alert.h"
#include "app/bring_to_front.h"
#include "app/sorter_delegate.h"
#include "platform/platform.h"
#include "schedule/next_sort_date.h"
#include "schedule/schedule_settings.h"
#include "schedule/settings_keys.h"
#include "schedule/typed_defaults.h"

namespace {

struct Day {
  const char* title;
  const char* name;  // for screen readers
};

constexpr std::array<Day, 7> dayNames = {{{"Sun", "Sunday"},
                                          {"Mon", "Monday"},
                                          {"Tue", "Tuesday"},
                                          {"Wed", "Wednesday"},
                                          {"Thu", "Thursday"},
                                          {"Fri", "Friday"},
                                          {"Sat", "Saturday"}}};

constexpr const char* explanation =
    "Scheduled sorts quit Safari normally, back up and sort bookmarks, then reopen Safari if it was running. Safari is "
    "never force-quit.\n\nThe Mac must be awake and sorting started. Missed schedules are skipped. Stop pauses both "
    "automatic options.";

// The stored time on today's date, or the start of today if the stored time is invalid.
Instant storedTimeToday() {
  const auto calendar = currentCalendar();
  DateComponents today = calendar->components(desktop().mainLoop.now());
  today.hour = 0;
  const Instant midnight = calendar->instant(today);
  const Instant justBefore = midnight - Instant::duration(1);
  const MatchingTime wanted{std::nullopt, integerForKey(settings_keys::dailyHour),
                            integerForKey(settings_keys::dailyMinute)};
  return calendar->nextDate(justBefore, wanted).value_or(midnight);
}

bool isIn(int day, const std::vector<int>& days) { return std::ranges::find(days, day) != days.end(); }

}  // namespace

std::vector<int> SorterDelegate::selectedDays() const { return scheduledDays(); }

void SorterDelegate::showSchedule() {
  if (!settingsWindow) {
    settingsWindow = desktop().screen.makeWindow({.width = 530, .height = 370, .title = "Schedule"});
    addScheduleControls();
    scheduleControlsChanged();
    settingsWindow->center();
  }
  bringToFront(*settingsWindow);
}

void SorterDelegate::addScheduleControls() {
  Window& window = *settingsWindow;
  const std::vector<int> days = selectedDays();
  quitToggle = window.add(CheckBox{{24, 320, 470, 26}, "Sort when Safari quits", {}});
  quitToggle->setOn(sortOnQuit());
  dailyToggle = window.add(
      CheckBox{{24, 282, 470, 26}, "Enable scheduled sorting", calling(&SorterDelegate::scheduleControlsChanged)});
  dailyToggle->setOn(booleanForKey(settings_keys::dailyEnabled));
  timePicker = window.addTimePicker({24, 238, 160, 30});
  timePicker->setAccessibilityLabel("Time of the scheduled sort");
  timePicker->setDateValue(storedTimeToday());
  PopUp presets{{204, 238, 290, 30}, {}, calling(&SorterDelegate::presetChanged)};
  for (const DayPreset& preset : dayPresets()) presets.items.push_back(preset.title);
  dayPreset = window.add(presets);
  dayPreset->setAccessibilityLabel("Days of the scheduled sort");
  dayPreset->select(presetOf(days));
  dayButtons.clear();
  for (int day = 0; day < 7; ++day) {
    const auto& [title, name] = dayNames.at(static_cast<std::size_t>(day));
    dayButtons.push_back(window.add(CheckBox{{24 + 69 * day, 190, 68, 26}, title, {}, day + 1}));
    dayButtons.back()->setAccessibilityLabel(name);
    dayButtons.back()->setOn(isIn(day + 1, days));
  }
  window.add(Label{.frame = {24, 64, 482, 106}, .text = explanation});
  window.add(PushButton{{412, 16, 94, 32}, "Save", calling(&SorterDelegate::saveSchedule), KeyEquivalent::returnKey});
  window.add(PushButton{{310, 16, 94, 32}, "Cancel", calling(&SorterDelegate::cancelSchedule), KeyEquivalent::escape});
}

void SorterDelegate::scheduleControlsChanged() {
  const bool isScheduled = dailyToggle->isOn();
  timePicker->setEnabled(isScheduled);
  dayPreset->setEnabled(isScheduled);
  const bool daysDecide = isScheduled && dayPreset->selectedIndex() == selectedDaysPreset;
  for (const auto& button : dayButtons) button->setEnabled(daysDecide);
}

void SorterDelegate::presetChanged() {
  const std::size_t chosen = dayPreset->selectedIndex();
  if (chosen != selectedDaysPreset)
    for (const auto& button : dayButtons) button->setOn(isIn(button->tag(), dayPresets().at(chosen).days));
  scheduleControlsChanged();
}

void SorterDelegate::saveSchedule() {
  ScheduleChoice choice{quitToggle->isOn(), {}, dailyToggle->isOn(), timePicker->dateValue()};
  for (const auto& button : dayButtons)
    if (button->isOn()) choice.checkedDays.push_back(button->tag());
  if (!storeSchedule(choice)) {
    alert("Choose a day", "Select at least one day for scheduled sorting.");
    return;
  }
  closeSchedule();
  scheduleDaily();
  refresh();
}

void SorterDelegate::cancelSchedule() { closeSchedule(); }

void SorterDelegate::closeSchedule() {
  if (settingsWindow) settingsWindow->orderOut();
  settingsWindow = nullptr;
}
