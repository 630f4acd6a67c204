#include "engine/guarded_rewrite.h"

#include "engine/backups.h"
#include "engine/safari.h"
#include "engine/sorter_error.h"
#include "platform/platform.h"

void requireSafariClosed() {
  if (safariRunning())
    throw sorterError(
        SorterError::safariIsOpen,
        "Quit Safari first, then run Vantorel from Finder → Services. Your bookmarks have not been changed.");
}

std::optional<std::string> rewriteBookmarkFile(
    const std::string& path, const std::function<std::optional<MakeContent>(const Bytes& oldBytes)>& decide) {
  requireSafariClosed();
  FileSystem& files = platform().fileSystem;
  const Bytes oldBytes = files.read(path);
  const std::optional<MakeContent> makeContent = decide(oldBytes);
  if (!makeContent) return std::nullopt;

  std::string backup = backUp(oldBytes);
  const Bytes newBytes = (*makeContent)();
  if (safariRunning() || !files.replaceIfHolds(path, oldBytes, newBytes))
    throw sorterError(
        SorterError::changedMeanwhile,
        "Safari or bookmark syncing changed the file. Nothing was overwritten; try again once syncing settles.");
  return backup;
}
