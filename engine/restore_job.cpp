#include "engine/restore_job.h"

#include <algorithm>
#include <utility>

#include "app/alert.h"
#include "app/probes.h"
#include "engine/bookmark_file.h"
#include "platform/platform.h"

namespace {

// The bytes of a backup that is fit to be a bookmark file.
Bytes contentOfBackup(const std::string& path) {
  Bytes bytes = platform().fileSystem.read(path);
  parseBookmarks(bytes);
  return bytes;
}

// Whether the folder of a file can be looked through and the file is not there.
bool isMissing(const std::string& path) {
  const std::size_t slash = path.rfind('/');
  return std::ranges::none_of(platform().fileSystem.filesIn(path.substr(0, slash)), [&](const FileEntry& file) {
    return path.compare(slash + 1, path.npos, file.name) == 0;
  });
}

void reportRestored(const std::optional<std::string>& backup) {
  alert("Bookmarks restored", "Your bookmarks are as they were when the backup was made. You can reopen Safari." +
                                  (backup ? "\n\nBackup: " + *backup : std::string()));
}

// Answers whether the file had other bytes.
bool restore(const std::string& backup, const std::string& path) {
  if (isMissing(path)) {
    const Bytes content = contentOfBackup(backup);
    if (safariRunning()) throw safariIsOpen();
    platform().fileSystem.writeNew(path, content);  // fails if there is one by now
    reportRestored(std::nullopt);
    return true;
  }
  const auto replacement = [&](const Bytes& oldBytes) -> std::optional<MakeContent> {
    Bytes content = contentOfBackup(backup);
    if (content == oldBytes) return std::nullopt;
    return [content = std::move(content)] { return content; };
  };
  const std::optional<std::string> backupOfToday = rewriteBookmarkFile(path, replacement);
  if (backupOfToday)
    reportRestored(backupOfToday);
  else
    alert("Already restored", "Your Safari bookmarks are already the same as this backup.");
  return backupOfToday.has_value();
}

}  // namespace

RestoreResult performRestore(const std::string& backup, const std::optional<std::string>& file) {
  if (safariRunning()) return {RestoreOutcome::safariRunning, {}};
  RestoreOutcome outcome = RestoreOutcome::failed;
  const auto message = reportingFailure("Bookmarks could not be restored", [&] {
    outcome = restore(backup, file ? *file : bookmarkFile()) ? RestoreOutcome::restored : RestoreOutcome::alreadyThere;
  });
  if (message) return {RestoreOutcome::failed, *message};
  return {outcome, {}};
}
