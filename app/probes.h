// What the program finds out before it sorts.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "platform/running_applications.h"

// The bundle identifier by which Safari is known.
inline constexpr const char* safariIdentifier = "com.apple.Safari";

// Every Safari process that is running.
std::vector<std::shared_ptr<RunningApplication>> runningSafaris();

// Whether at least one Safari process is running.
bool safariRunning();

// The path of the current user's bookmark file.
std::string bookmarkFile();

// Whether the bookmark file can be read. It is read, whole: what governs access to Safari's data shows only when
// someone reads them. Every failure counts alike, and nothing is reported.
bool canReadBookmarks();

// Whether the program runs from a disk image, which is no place for it to stay.
bool runsFromDiskImage();

// Where the user's wish to stop automatic sorting is stored: a Boolean in the user's defaults.
inline constexpr const char* sortingPausedKey = "sortingPaused";

// Whether the user has stopped automatic sorting.
bool sortingIsPaused();

// Notes for good that the bookmark file could once be read.
void noteAccessGranted();
