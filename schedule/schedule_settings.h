// The stored settings of automatic sorting, read anew at each use.
#pragma once

#include <array>
#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "platform/calendar.h"

// True if the user has stopped automatic sorting.
bool sortingIsPaused();
void storeSortingPaused(bool isPaused);

// True if a sort follows each time that the user quits Safari.
bool sortsOnSafariQuit();

// The weekdays of the scheduled sort in the stored order; all seven if none are stored or the value is malformed.
std::vector<int> scheduledDays();

// When the first scheduled sort after an instant is due; none if scheduling is off or no day is chosen. Does not depend
// on whether automatic sorting is stopped.
std::optional<Instant> nextScheduledSort(Instant after);

// Records that the bookmark file could be read at least once.
void storeAccessGranted();

// A named choice of days.
struct DayPreset {
  std::string title;
  std::vector<int> days;
};

// The presets in the order of the menu. The last one has no days of its own: the user checks them one by one.
const std::array<DayPreset, 4>& dayPresets();
inline constexpr std::size_t selectedDaysPreset = 3;

// The index of the preset that has exactly this set of days, or `selectedDaysPreset`.
std::size_t presetOf(const std::vector<int>& days);

// What a user chooses in the schedule window.
struct ScheduleChoice {
  bool sortOnQuit;
  std::vector<int> checkedDays;  // weekdays, Sunday first
  bool isScheduled;
  Instant time;  // only its hour and minute in the user's calendar count
};

// Stores a choice and returns true. Returns false and stores nothing if the choice schedules sorts on no day.
bool storeSchedule(const ScheduleChoice& choice);
