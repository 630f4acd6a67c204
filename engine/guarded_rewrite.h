// Replacing the bookmark file without losing anybody's changes.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "values/byte_pieces.h"
#include "values/bytes.h"

// Makes the new content of a file. Called once the old content is backed up.
using MakeContent = std::function<BytePieces()>;

// A file that was replaced.
struct Rewrite {
  std::string backup;                     // the path of the backup of the old bytes
  bool changedLate = false;               // another program changed the old file while it was replaced
  std::optional<std::string> lateBackup;  // the path of the backup of these changes; absent if none could be made

  friend bool operator==(const Rewrite&, const Rewrite&) = default;
};

// Replaces the bookmark file at `path`, in this order: checks that Safari is closed, removes what killed processes have
// left, reads the file, calls `decide` with the old bytes, writes them to a new backup file, calls the function that
// `decide` returned, writes the new file beside the old one, checks that Safari is still closed and that the file still
// has the old bytes, and replaces the file atomically. If another program has changed the old file in that moment, its
// bytes go to a second backup. Returns none if `decide` returned none; nothing was written then. Throws Error, and the
// file is unchanged: SorterError::safariIsOpen, SorterError::changedMeanwhile, whatever `decide` throws, and errors of
// the file system. `inUse` are other files that `decide` reads.
std::optional<Rewrite> rewriteBookmarkFile(
    const std::string& path, const std::function<std::optional<MakeContent>(const Bytes& oldBytes)>& decide,
    const std::vector<std::string>& inUse = {});

// Throws SorterError::safariIsOpen if Safari is running.
void requireSafariClosed();

// Removes the temporary files that killed processes have left beside `path` and in the folder with its backups, but no
// file of `inUse`.
void removeAbandonedFiles(const std::string& path, const std::vector<std::string>& inUse);
