#include "engine/bookmark_file.h"

#include <exception>

#include "app/alert.h"
#include "app/probes.h"
#include "engine/backups.h"
#include "engine/bookmark_node.h"
#include "platform/platform.h"

namespace {

constexpr const char* errorDomain = "Sorter";

Error notABookmarkTree() { return {errorDomain, 2, "Unrecognised Safari bookmark format. No changes made."}; }

Error changedMeanwhile() {
  return {errorDomain, 3,
          "Safari or bookmark syncing changed the file. Nothing was overwritten; try again once syncing settles."};
}

std::string reportFailure(const std::string& title, const std::string& description) {
  std::string message = description +
                        "\n\nIf access is denied, macOS may require Full Disk Access for the workflow runner in "
                        "System Settings → Privacy & Security. No permissions are changed automatically.";
  alert(title, message);
  return message;
}

}  // namespace

Error safariIsOpen() {
  return {errorDomain, 1,
          "Quit Safari first, then run Vantorel from Finder → Services. Your bookmarks have not been changed."};
}

PropertyLists::Parsed parseBookmarks(const Bytes& bytes) {
  PropertyLists::Parsed parsed = platform().propertyLists.parse(bytes);
  if (!childrenOf(parsed.value)) throw notABookmarkTree();
  return parsed;
}

std::optional<std::string> rewriteBookmarkFile(
    const std::string& path, const std::function<std::optional<MakeContent>(const Bytes& oldBytes)>& decide) {
  if (safariRunning()) throw safariIsOpen();
  FileSystem& files = platform().fileSystem;
  const Bytes oldBytes = files.read(path);
  const std::optional<MakeContent> makeContent = decide(oldBytes);
  if (!makeContent) return std::nullopt;

  std::string backup = backUp(oldBytes);
  const Bytes newBytes = (*makeContent)();
  if (safariRunning() || !files.replaceIfHolds(path, oldBytes, newBytes)) throw changedMeanwhile();
  return backup;
}

std::optional<std::string> reportingFailure(const std::string& title, const std::function<void()>& work) {
  try {
    work();
    return std::nullopt;
  } catch (const Error& error) {
    return reportFailure(title, error.description());
  } catch (const std::exception& error) {
    return reportFailure(title, error.what());
  }
}
