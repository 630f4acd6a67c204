// The list of backups for people.
#pragma once

#include <string>
#include <vector>

#include "companion/styles.h"
#include "engine/backups.h"

// A heading and a line for each backup: name, time, size, number of bookmarks ("damaged" if it is no bookmark file),
// and "current" where the bookmark file has the same bytes. If there is none, a line that says so.
std::string backupTable(const std::vector<Backup>& backups, const Styles& styles);
