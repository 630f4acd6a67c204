// Where a virtual machine has what a sort is about, and what is said when a sort fails.
#pragma once

#include <string>

inline constexpr const char* safari = "com.apple.Safari";
inline const std::string bookmarkFolder = "/home/user/Library/Safari";
inline const std::string bookmarks = bookmarkFolder + "/Bookmarks.plist";
inline const std::string backups = "/home/user/Library/Application Support/Quillery/Backups";

// What every failure ends with.
inline const std::string accessHint =
    "\n\nIf access is denied, macOS may require Full Disk Access for the workflow runner in System Settings → Privacy "
    "& "
    "Security. No permissions are changed automatically.";
