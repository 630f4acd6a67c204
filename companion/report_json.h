// Reports of the commands as JSON, each one object in a line.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "engine/backups.h"
#include "platform/calendar.h"

// "file" and "isInOrder".
std::string orderJson(const std::string& file, bool isInOrder);

// "file", the "backups" of it, newest first, and the sum of their sizes as "size". Each backup has "name", "path",
// "time" (in UTC), "size", "bookmarks" (null if it is damaged) and "isCurrent".
std::string backupsJson(const std::string& file, const std::vector<Backup>& backups);

// "next", the time in UTC of the next scheduled sort or null, and "isStopped".
std::string nextJson(const std::optional<Instant>& next, bool isStopped);
