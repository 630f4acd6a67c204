#include "engine/backups.h"

#include <algorithm>
#include <limits>
#include <unordered_map>

#include "engine/bookmark_file.h"
#include "engine/bookmark_node.h"
#include "platform/platform.h"

namespace {

constexpr unsigned backupFolderMode = 0700;
constexpr unsigned backupFileMode = 0600;

constexpr std::string_view namePrefix = "Bookmarks-";
constexpr std::string_view nameSuffix = ".plist";

// Counts the bookmarks of a tree. A node or list that several folders share counts once per folder but is visited only
// once.
class BookmarkCount {
 public:
  std::uint64_t in(const PlistValue& node) {
    return remembered(node, [&] {
      const std::uint64_t own = fieldsOf(node).type == NodeType::leaf ? 1 : 0;
      const std::optional<PlistValue> list = lists_.of(node);
      return list ? sum(own, remembered(*list, [&] { return inList(*list); })) : own;
    });
  }

 private:
  std::uint64_t inList(const PlistValue& list) {
    std::uint64_t count = 0;
    for (std::size_t index = 0; index < list.size(); ++index) count = sum(count, in(list.at(index)));
    return count;
  }

  template <class Count>
  std::uint64_t remembered(const PlistValue& value, const Count& count) {
    if (!value.mayBeShared()) return count();
    if (const auto known = known_.find(value.identity()); known != known_.end()) return known->second;
    const std::uint64_t counted = count();
    known_.emplace(value.identity(), counted);
    return counted;
  }

  static std::uint64_t sum(std::uint64_t a, std::uint64_t b) {
    return a > std::numeric_limits<std::uint64_t>::max() - b ? std::numeric_limits<std::uint64_t>::max() : a + b;
  }

  EntryLists lists_;
  std::unordered_map<PlistValue::Identity, std::uint64_t> known_;
};

// The content of a file; absent if it cannot be read.
std::optional<Bytes> bytesOf(const std::string& path) {
  try {
    return platform().fileSystem.read(path);
  } catch (const Error&) {
    return std::nullopt;
  }
}

bool isBackupName(std::string_view name) { return name.starts_with(namePrefix) && name.ends_with(nameSuffix); }

Backup examine(FileEntry file, const std::string& folder, const std::optional<Bytes>& current) {
  Backup backup{std::move(file), std::nullopt, false};
  try {
    const Bytes bytes = platform().fileSystem.read(folder + "/" + backup.file.name);
    backup.isCurrent = current == bytes;
    backup.bookmarks = BookmarkCount().in(parseBookmarks(bytes).value);
  } catch (const Error&) {
    return backup;  // a damaged or deleted backup must not hide the others
  }
  return backup;
}

}  // namespace

std::string backupsFolder() {
  return platform().fileSystem.homeFolder() + "/Library/Application Support/Quillery/Backups";
}

std::string backupsFolderOf(const std::string& path) {
  const std::string own = bookmarkFile();
  if (path == own) return backupsFolder();
  FileSystem& files = platform().fileSystem;
  const std::string resolved = files.resolved(path);
  return resolved == files.resolved(own) ? backupsFolder() : backupsFolder() + "/Other Files" + resolved;
}

bool isBackupOf(const std::string& backup, const std::string& path) {
  FileSystem& files = platform().fileSystem;
  return files.resolved(backup.substr(0, backup.rfind('/'))) == files.resolved(backupsFolderOf(path));
}

void createBackupsFolder() { platform().fileSystem.createFolder(backupsFolder(), backupFolderMode); }

std::string backUp(const Bytes& bytes, const std::string& path) {
  FileSystem& files = platform().fileSystem;
  const std::string folder = backupsFolderOf(path);
  files.createFolder(folder, backupFolderMode);
  std::string backup =
      folder + "/" + std::string(namePrefix) + platform().processes.randomUuid() + std::string(nameSuffix);
  files.writeNew(backup, bytes);
  files.setMode(backup, backupFileMode);
  return backup;
}

std::vector<FileEntry> backupFiles(const std::string& path) {
  std::vector<FileEntry> files = platform().fileSystem.filesIn(backupsFolderOf(path));
  std::erase_if(files, [](const FileEntry& file) { return !isBackupName(file.name); });
  std::ranges::sort(files, [](const FileEntry& a, const FileEntry& b) {
    return a.modified != b.modified ? a.modified > b.modified : a.name < b.name;
  });
  return files;
}

std::optional<std::string> lastDifferentBackup(const std::string& path) {
  const std::optional<Bytes> current = bytesOf(path);
  const std::string folder = backupsFolderOf(path);
  for (const FileEntry& file : backupFiles(path)) {
    std::string backup = folder + "/" + file.name;
    if (const std::optional<Bytes> bytes = bytesOf(backup); bytes && bytes != current) return backup;
  }
  return std::nullopt;
}

std::vector<std::string> backupsNamed(const std::string& beginning, const std::string& path) {
  const std::string folder = backupsFolderOf(path);
  std::vector<std::string> found;
  for (const FileEntry& file : backupFiles(path)) {
    std::string backup = folder + "/" + file.name;
    if (file.name == beginning) return {std::move(backup)};
    if (file.name.starts_with(beginning) || file.name.starts_with(std::string(namePrefix) + beginning))
      found.push_back(std::move(backup));
  }
  return found;
}

std::vector<Backup> listBackups(const std::string& path, const std::optional<Bytes>& current) {
  const std::string folder = backupsFolderOf(path);
  std::vector<Backup> backups;
  for (FileEntry& file : backupFiles(path)) backups.push_back(examine(std::move(file), folder, current));
  return backups;
}

std::uint64_t totalSize(const std::vector<Backup>& backups) {
  std::uint64_t size = 0;
  for (const Backup& backup : backups) size += backup.file.size;
  return size;
}
