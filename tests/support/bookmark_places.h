// The paths of a virtual machine's bookmarks and backups, and the hint in reports of failures.
#pragma once

#include <string>

inline constexpr const char* safari = "com.apple.Safari";
inline const std::string bookmarkFolder = "/home/user/Library/Safari";
inline const std::string bookmarks = bookmarkFolder + "/Bookmarks.plist";
inline const std::string backups = "/home/user/Library/Application Support/Quillery/Backups";

// The end of every report of a failure.
inline const std::string accessHint =
    "\n\nIf access is denied, macOS may require Full Disk Access for the workflow runner in System Settings → Privacy "
    "& "
    "Security. No permissions are changed automatically.";
