// The sort job: the one operation that touches Safari's bookmark file.
#pragma once

#include <optional>
#include <string>

enum class SortOutcome {
  sorted,  // the file was rewritten, and a backup of the old bytes made
  alreadyInOrder,
  safariRunning,  // nothing was read: the run was unattended, or the user chose not to wait
  onDiskImage,    // nothing was read: the program has to be installed first
  failed,         // the bookmark file is as it was
};

struct SortResult {
  SortOutcome outcome;
  std::string message;  // of a failure: what the user was told
};

// Sorts the current user's bookmark file: makes sure that Safari is closed, reads and parses the file, sorts the
// tree, does nothing more if it is in order, else writes the old bytes to a new backup file, checks that neither
// Safari nor bookmark syncing touched the file meanwhile, and replaces it whole or not at all. Every outcome is
// reported through the alert helper, and asked about where Safari is open; while `automatic` is true nothing is
// asked and only a sort or a failure is reported. Never throws. May block in modal dialogs. With `file` that one is
// sorted in the place of the current user's, under the same guards, and its backup is kept in the same folder.
SortResult performSort(const std::optional<std::string>& file = std::nullopt);
