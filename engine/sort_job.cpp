#include "engine/sort_job.h"

#include "app/alert.h"
#include "app/probes.h"
#include "engine/bookmark_file.h"
#include "engine/sort_order.h"
#include "platform/platform.h"

namespace {

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

// Answers the path of the backup, or nothing where the file was in order.
std::optional<std::string> sortBookmarkFile(const std::string& path) {
  return rewriteBookmarkFile(path, [](const Bytes& oldBytes) -> std::optional<MakeContent> {
    const PropertyLists::Parsed parsed = parseBookmarks(oldBytes);
    const PlistValue inOrder = sorted(parsed.value, true);
    if (inOrder == parsed.value) return std::nullopt;
    return [inOrder, format = parsed.format] { return platform().propertyLists.serialize(inOrder, format); };
  });
}

// Answers whether there was anything to sort.
bool sortAndReport(const std::string& path) {
  const std::optional<std::string> backup = sortBookmarkFile(path);
  if (backup) {
    alert("Bookmarks sorted",
          "Folders come first, followed by bookmarks in alphabetical order. You can reopen Safari.\n\nBackup: " +
              *backup);
  } else if (!automatic) {
    alert("Already sorted", "Your Safari bookmarks are already in order.");
  }
  return backup.has_value();
}

}  // namespace

SortResult performSort(const std::optional<std::string>& file) {
  if (!automatic && runsFromDiskImage()) {
    alert("Install the app first",
          "Drag Quillery into Applications, then open the installed copy. Automatic sorting cannot run from a disk "
          "image.");
    return {SortOutcome::onDiskImage, {}};
  }
  if (!safariClosed()) return {SortOutcome::safariRunning, {}};
  SortOutcome outcome = SortOutcome::failed;
  const auto message = reportingFailure("Bookmarks could not be sorted", [&] {
    outcome = sortAndReport(file ? *file : bookmarkFile()) ? SortOutcome::sorted : SortOutcome::alreadyInOrder;
  });
  if (message) return {SortOutcome::failed, *message};
  return {outcome, {}};
}
