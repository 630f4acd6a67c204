// Bringing a backup back, with the care of a sort.
#pragma once

#include <optional>
#include <string>

enum class RestoreOutcome {
  restored,       // the file has the backup's bytes, and what it had before is in a new backup
  alreadyThere,   // it had them before; nothing was written
  safariRunning,  // nothing was read
  failed,         // the bookmark file is as it was
};

struct RestoreResult {
  RestoreOutcome outcome;
  std::string message;  // of a failure: what the user was told
};

// Gives the bookmark file the exact bytes of the file at `backup`, which must be a bookmark file itself; whatever the
// bookmark file holds now is backed up first, so that a restore can be undone like a sort. With `file` that one is
// replaced in the place of the current user's. A file that is missing is written anew, if there is still none by then.
// Only for runs that nobody watches: `automatic` is true. Every outcome but an open Safari is reported through the
// alert helper. Never throws.
RestoreResult performRestore(const std::string& backup, const std::optional<std::string>& file = std::nullopt);
