// The settings of the scheduled sort and of the sort when Safari quits: what is stored, and what a user may choose.
#pragma once

#include <array>
#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "platform/calendar.h"

// The keys in the user's defaults. Nothing registers default values: whoever reads one applies its default.
namespace schedule_keys {
inline constexpr const char* sortOnSafariQuit = "sortOnSafariQuit";  // Boolean; true
inline constexpr const char* scheduleDays = "scheduleDays";          // array of weekday numbers, 1 is Sunday; all
inline constexpr const char* dailyEnabled = "dailyEnabled";          // Boolean; false
inline constexpr const char* dailyHour = "dailyHour";                // integer, 0 to 23; 0
inline constexpr const char* dailyMinute = "dailyMinute";            // integer, 0 to 59; 0
}  // namespace schedule_keys

// The weekdays stored for the scheduled sort, as stored; all seven if there are none or no such list.
std::vector<int> storedDays();

// When the next scheduled sort is due after an instant, by the settings as they are now; absent if scheduling is off or
// no day is chosen. Whether automatic sorting is stopped is not looked at.
std::optional<Instant> nextScheduledSort(Instant after);

// A choice of days that has a name.
struct DayPreset {
  std::string title;
  std::vector<int> days;
};

// In the order in which they are offered. The last has no days of its own: the check boxes of the days decide.
const std::array<DayPreset, 4>& dayPresets();
inline constexpr std::size_t selectedDaysPreset = 3;

// The preset that has just these days, as a set; `selectedDaysPreset` where none does.
std::size_t presetOf(const std::vector<int>& days);

// What the controls of the schedule window say.
struct ScheduleChoice {
  bool sortOnQuit;
  std::vector<int> checkedDays;  // weekday numbers, Sunday first
  bool isScheduled;
  Instant time;  // of it only the hour and minute in the user's calendar count
};

// Stores a choice. One that schedules sorts on no day at all is refused: the user is told, and nothing is stored.
// Answers whether it was stored.
bool storeSchedule(const ScheduleChoice& choice);
