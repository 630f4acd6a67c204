// The program's own errors.
#pragma once

#include <string>
#include <utility>

#include "platform/error.h"

// The codes of the domain "Sorter".
enum class SorterError {
  safariIsOpen = 1,            // Safari is running where it must be closed
  notABookmarkTree = 2,        // the file is a property list, but not of bookmarks
  changedMeanwhile = 3,        // Safari was started, or the file changed, since it was read
  agentNotLoaded = 4,          // launchctl rejected the login agent
  previewHasTooManyLines = 5,  // shared folders would make a small file into an endless list
  notVerified = 6              // the new content does not parse to the sorted tree
};

// True if an error is the one of this code.
inline bool isSorterError(const Error& error, SorterError code) {
  return error.domain() == "Sorter" && error.code() == static_cast<int>(code);
}

inline Error sorterError(SorterError code, std::string description) {
  return {"Sorter", static_cast<int>(code), std::move(description)};
}
