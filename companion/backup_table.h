// The list of backups as text.
#pragma once

#include <string>
#include <vector>

#include "companion/styles.h"
#include "engine/backups.h"

// Returns a heading and a line for each backup: name, time, size, number of bookmarks ("damaged" if it is not a
// bookmark file), and "current" if the bookmark file has the same bytes; and a line with their number and the sum of
// their sizes. Without backups, a line that says so.
std::string backupTable(const std::vector<Backup>& backups, const Styles& styles);
