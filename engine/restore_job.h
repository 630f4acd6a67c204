// The restore job: brings a backup back, with the guards of a sort.
#pragma once

#include <optional>
#include <string>

#include "engine/guarded_rewrite.h"

enum class RestoreOutcome {
  restored,     // the file has the backup's bytes now
  alreadyThere  // it had them before; nothing was written
};

struct RestoreResult {
  RestoreOutcome outcome;
  std::optional<Rewrite> rewrite;  // none if no file was replaced
};

// Gives the bookmark file at `path` the exact bytes of the file at `backup`, which must be a bookmark file itself. What
// the bookmark file has now is backed up first, so that a restore can be undone. A missing bookmark file is created,
// and the restore fails if somebody else creates it first. Throws Error, and the bookmark file is unchanged; see
// guarded_rewrite.h for the errors.
RestoreResult restoreBookmarkFile(const std::string& backup, const std::string& path);
