#include "engine/bookmark_file.h"

#include "engine/bookmark_node.h"
#include "engine/sorter_error.h"
#include "platform/platform.h"

std::string bookmarkFile() { return platform().fileSystem.homeFolder() + "/Library/Safari/Bookmarks.plist"; }

std::optional<std::size_t> readableBookmarks() {
  try {
    return platform().fileSystem.read(bookmarkFile()).size();
  } catch (const Error&) {
    return std::nullopt;
  }
}

PropertyLists::Parsed parseBookmarks(const Bytes& bytes) {
  PropertyLists::Parsed parsed = platform().propertyLists.parse(bytes);
  if (!childrenOf(parsed.value))
    throw sorterError(SorterError::notABookmarkTree, "Unrecognised Safari bookmark format. No changes made.");
  return parsed;
}
