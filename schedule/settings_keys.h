// Every key that the program stores in the user's defaults. Nothing registers default values: each reader applies the
// default that is named here.
#pragma once

namespace settings_keys {

inline constexpr const char* sortOnSafariQuit = "sortOnSafariQuit";  // Boolean; true
inline constexpr const char* scheduleDays = "scheduleDays";          // array of weekdays, 1 is Sunday; all seven
inline constexpr const char* dailyEnabled = "dailyEnabled";          // Boolean; false
inline constexpr const char* dailyHour = "dailyHour";                // integer, 0 to 23; 0
inline constexpr const char* dailyMinute = "dailyMinute";            // integer, 0 to 59; 0
inline constexpr const char* sortingPaused = "sortingPaused";        // Boolean; false
// Boolean; written, never read
inline constexpr const char* bookmarkAccessPreviouslyGranted = "bookmarkAccessPreviouslyGranted";

}  // namespace settings_keys
