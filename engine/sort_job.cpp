#include "engine/sort_job.h"

#include <exception>
#include <optional>
#include <string_view>

#include "app/alert.h"
#include "app/probes.h"
#include "engine/bookmark_node.h"
#include "engine/sort_order.h"
#include "platform/platform.h"

namespace {

constexpr unsigned backupFolderMode = 0700;
constexpr unsigned backupFileMode = 0600;

constexpr const char* errorDomain = "Sorter";

Error safariIsOpen() {
  return {errorDomain, 1,
          "Quit Safari first, then run Vantorel from Finder → Services. Your bookmarks have not been changed."};
}

Error notABookmarkTree() { return {errorDomain, 2, "Unrecognised Safari bookmark format. No changes made."}; }

Error changedMeanwhile() {
  return {errorDomain, 3,
          "Safari or bookmark syncing changed the file. Nothing was overwritten; try again once syncing settles."};
}

// Waits, with the user's help, for Safari to be closed; answers whether it is.
bool safariClosed() {
  while (safariRunning()) {
    if (automatic) return false;
    UserInterface& userInterface = platform().userInterface;
    userInterface.becomeAccessory();
    userInterface.activateIgnoringOthers();
    const std::size_t choice = userInterface.runModal(
        {"Safari is still open",
         "Quit Safari, then click Retry to sort your bookmarks. Your bookmarks have not been changed.",
         {"Retry", "Cancel"}});
    if (choice != 0) return false;
  }
  return true;
}

// A dictionary with an array of dictionaries as its children; whatever else it is.
bool isBookmarkTree(const PlistValue& root) { return childrenOf(root).has_value(); }

// Writes `bytes` to a new file in the backups folder; answers its path.
std::string backUp(const Bytes& bytes) {
  FileSystem& files = platform().fileSystem;
  const std::string folder = backupsFolder();
  files.createFolder(folder, backupFolderMode);
  std::string path = folder + "/Bookmarks-" + platform().processes.randomUuid() + ".plist";
  files.writeNew(path, bytes);
  files.setMode(path, backupFileMode);
  return path;
}

// The part that reads and writes. Answers the path of the backup, or nothing where the file was in order.
std::optional<std::string> sortBookmarkFile() {
  if (safariRunning()) throw safariIsOpen();
  FileSystem& files = platform().fileSystem;
  PropertyLists& propertyLists = platform().propertyLists;
  const std::string path = bookmarkFile();
  const Bytes oldBytes = files.read(path);
  const PropertyLists::Parsed parsed = propertyLists.parse(oldBytes);
  if (!isBookmarkTree(parsed.value)) throw notABookmarkTree();
  const PlistValue inOrder = sorted(parsed.value, true);
  if (inOrder == parsed.value) return std::nullopt;

  std::string backup = backUp(oldBytes);
  const Bytes newBytes = propertyLists.serialize(inOrder, parsed.format);
  if (safariRunning() || !files.replaceIfHolds(path, oldBytes, newBytes)) throw changedMeanwhile();
  return backup;
}

SortResult reportFailure(const std::string& description) {
  const std::string message = description +
                              "\n\nIf access is denied, macOS may require Full Disk Access for the workflow runner in "
                              "System Settings → Privacy & Security. No permissions are changed automatically.";
  alert("Bookmarks could not be sorted", message);
  return {SortOutcome::failed, message};
}

}  // namespace

std::string backupsFolder() {
  return platform().fileSystem.homeFolder() + "/Library/Application Support/Quillery/Backups";
}

SortResult performSort() {
  if (!automatic && runsFromDiskImage()) {
    alert("Install the app first",
          "Drag Quillery into Applications, then open the installed copy. Automatic sorting cannot run from a disk "
          "image.");
    return {SortOutcome::onDiskImage, {}};
  }
  if (!safariClosed()) return {SortOutcome::safariRunning, {}};
  try {
    const std::optional<std::string> backup = sortBookmarkFile();
    if (!backup) {
      if (!automatic) alert("Already sorted", "Your Safari bookmarks are already in order.");
      return {SortOutcome::alreadyInOrder, {}};
    }
    alert("Bookmarks sorted",
          "Folders come first, followed by bookmarks in alphabetical order. You can reopen Safari.\n\nBackup: " +
              *backup);
    return {SortOutcome::sorted, {}};
  } catch (const Error& error) {
    return reportFailure(error.description());
  } catch (const std::exception& error) {
    return reportFailure(error.what());
  }
}
