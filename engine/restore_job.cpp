#include "engine/restore_job.h"

#include <algorithm>
#include <utility>

#include "engine/bookmark_file.h"
#include "platform/platform.h"

namespace {

// The bytes of a backup, which must be a bookmark file.
Bytes contentOfBackup(const std::string& path) {
  Bytes bytes = platform().fileSystem.read(path);
  parseBookmarks(bytes);
  return bytes;
}

// True if the file's folder can be listed and does not have the file.
bool isMissing(const std::string& path) {
  const std::size_t slash = path.rfind('/');
  const std::string folder = slash == 0 ? "/" : path.substr(0, slash);
  return std::ranges::none_of(platform().fileSystem.filesIn(folder), [&](const FileEntry& file) {
    return path.compare(slash + 1, path.npos, file.name) == 0;
  });
}

}  // namespace

RestoreResult restoreBookmarkFile(const std::string& backup, const std::string& path) {
  if (isMissing(path)) {
    const Bytes content = contentOfBackup(backup);
    requireSafariClosed();
    removeAbandonedFiles(path, {backup});
    platform().fileSystem.writeNew(path, content);
    return {RestoreOutcome::restored, std::nullopt};
  }
  std::optional<Rewrite> rewrite = rewriteBookmarkFile(path,
                                                       [&](const Bytes& oldBytes) -> std::optional<MakeContent> {
                                                         Bytes content = contentOfBackup(backup);
                                                         if (content == oldBytes) return std::nullopt;
                                                         return [content = std::move(content)] { return content; };
                                                       },
                                                       {backup});
  return {rewrite ? RestoreOutcome::restored : RestoreOutcome::alreadyThere, std::move(rewrite)};
}
