#include "schedule/schedule_settings.h"

#include <set>

#include "platform/platform.h"
#include "schedule/next_sort_date.h"
#include "schedule/settings_keys.h"
#include "schedule/typed_defaults.h"

namespace {

std::vector<int> everyDay() { return {1, 2, 3, 4, 5, 6, 7}; }

PlistValue listOf(const std::vector<int>& numbers) {
  return PlistValue::array(std::vector<PlistValue>(numbers.begin(), numbers.end()));
}

}  // namespace

bool sortingIsPaused() { return booleanForKey(settings_keys::sortingPaused); }

void storeSortingPaused(bool isPaused) { platform().userDefaults.set(settings_keys::sortingPaused, isPaused); }

bool sortsOnSafariQuit() {
  const std::optional<PlistValue> stored = platform().userDefaults.object(settings_keys::sortOnSafariQuit);
  return stored ? stored->boolean().value_or(true) : true;
}

void storeAccessGranted() { platform().userDefaults.set(settings_keys::bookmarkAccessPreviouslyGranted, true); }

const std::array<DayPreset, 4>& dayPresets() {
  static const std::array<DayPreset, 4> presets = {
      {{"Daily", everyDay()}, {"Weekdays", {2, 3, 4, 5, 6}}, {"Weekends", {1, 7}}, {"Selected days", {}}}};
  return presets;
}

std::size_t presetOf(const std::vector<int>& days) {
  const std::set<int> chosen(days.begin(), days.end());
  for (std::size_t index = 0; index < selectedDaysPreset; ++index) {
    const std::vector<int>& preset = dayPresets().at(index).days;
    if (chosen == std::set<int>(preset.begin(), preset.end())) return index;
  }
  return selectedDaysPreset;
}

bool storeSchedule(const ScheduleChoice& choice) {
  if (choice.isScheduled && choice.checkedDays.empty()) return false;
  const DateComponents time = currentCalendar()->components(choice.time);
  UserDefaults& defaults = platform().userDefaults;
  defaults.set(settings_keys::sortOnSafariQuit, choice.sortOnQuit);
  defaults.set(settings_keys::scheduleDays, listOf(choice.checkedDays));
  defaults.set(settings_keys::dailyEnabled, choice.isScheduled);
  defaults.set(settings_keys::dailyHour, time.hour);
  defaults.set(settings_keys::dailyMinute, time.minute);
  return true;
}

std::vector<int> scheduledDays() {
  const std::optional<PlistValue> stored = platform().userDefaults.object(settings_keys::scheduleDays);
  if (!stored || !stored->is(PlistKind::array)) return everyDay();
  std::vector<int> days;
  for (std::size_t index = 0; index < stored->size(); ++index) {
    const std::optional<PlistInteger> day = stored->at(index).integer();
    if (!day) return everyDay();
    days.push_back(day->nearestInt());
  }
  return days;
}

std::optional<Instant> nextScheduledSort(Instant after) {
  if (!booleanForKey(settings_keys::dailyEnabled)) return std::nullopt;
  return nextSortDate(after, integerForKey(settings_keys::dailyHour), integerForKey(settings_keys::dailyMinute),
                      scheduledDays());
}
