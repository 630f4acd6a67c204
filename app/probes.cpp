#include "app/probes.h"

#include "schedule/typed_defaults.h"
#include "platform/platform.h"

std::vector<std::shared_ptr<RunningApplication>> runningSafaris() {
  return platform().runningApplications.withBundleIdentifier(safariIdentifier);
}

bool safariRunning() { return !runningSafaris().empty(); }

std::string bookmarkFile() { return platform().fileSystem.homeFolder() + "/Library/Safari/Bookmarks.plist"; }

bool canReadBookmarks() {
  try {
    platform().fileSystem.read(bookmarkFile());
    return true;
  } catch (const Error&) {
    return false;
  }
}

bool runsFromDiskImage() { return platform().bundle.path().starts_with("/Volumes/"); }

bool sortingIsPaused() { return booleanForKey(sortingPausedKey); }

void noteAccessGranted() { platform().userDefaults.set("bookmarkAccessPreviouslyGranted", true); }
