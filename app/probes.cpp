#include "app/probes.h"

#include "platform/platform.h"

bool safariRunning() { return !platform().runningApplications.withBundleIdentifier(safariIdentifier).empty(); }

std::string bookmarkFile() { return platform().fileSystem.homeFolder() + "/Library/Safari/Bookmarks.plist"; }

bool canReadBookmarks() {
  try {
    platform().fileSystem.read(bookmarkFile());
    return true;
  } catch (const Error&) {
    return false;
  }
}
