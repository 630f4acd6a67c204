#include "engine/guarded_rewrite.h"

#include <utility>

#include "engine/backups.h"
#include "engine/safari.h"
#include "engine/sorter_error.h"
#include "platform/platform.h"

namespace {

// Backs up what another program wrote to the old file while it was replaced. Throws nothing, because the new file is in
// place.
void backUpLateChanges(const std::string& path, const Replacement& replacement, Rewrite& rewrite) noexcept {
  rewrite.changedLate = replacement.changedLate;
  if (!replacement.lateBytes) return;
  try {
    rewrite.lateBackup = backUp(*replacement.lateBytes, path);
  } catch (...) {
    return;  // the report says that there is no backup of them
  }
}

}  // namespace

void requireSafariClosed() {
  if (safariRunning())
    throw sorterError(
        SorterError::safariIsOpen,
        "Quit Safari first, then run Vantorel from Finder → Services. Your bookmarks have not been changed.");
}

void removeAbandonedFiles(const std::string& path, const std::vector<std::string>& inUse) {
  FileSystem& files = platform().fileSystem;
  files.removeAbandonedFiles(path, inUse);
  files.removeAbandonedFiles(backupsFolderOf(path) + "/", inUse);
}

std::optional<Rewrite> rewriteBookmarkFile(
    const std::string& path, const std::function<std::optional<MakeContent>(const Bytes& oldBytes)>& decide,
    const std::vector<std::string>& inUse) {
  requireSafariClosed();
  removeAbandonedFiles(path, inUse);
  FileSystem& files = platform().fileSystem;
  const Bytes oldBytes = files.read(path);
  const std::optional<MakeContent> makeContent = decide(oldBytes);
  if (!makeContent) return std::nullopt;

  Rewrite rewrite{backUp(oldBytes, path), false, std::nullopt};
  const BytePieces newBytes = (*makeContent)();
  const Replacement replacement = files.replaceIfHolds(path, oldBytes, newBytes, [] { return !safariRunning(); });
  if (!replacement.done)
    throw sorterError(
        SorterError::changedMeanwhile,
        "Safari or bookmark syncing changed the file. Nothing was overwritten; try again once syncing settles.");
  backUpLateChanges(path, replacement, rewrite);
  return rewrite;
}
