#include "engine/sort_job.h"

#include "engine/bookmark_file.h"
#include "engine/sort_order.h"
#include "engine/sorter_error.h"
#include "platform/platform.h"

namespace {

// Serializes a tree, and makes sure that the result parses to the same tree.
BytePieces verifiedBytes(const PlistValue& meant, PropertyListFormat format) {
  PropertyLists& propertyLists = platform().propertyLists;
  BytePieces bytes = propertyLists.serializeInPieces(meant, format);
  if (!propertyLists.parsesTo(meant, bytes))
    throw sorterError(SorterError::notVerified,
                      "The new bookmark file would not be the sorted old one. Nothing was overwritten.");
  return bytes;
}

// Returns what makes the sorted content; none if the content is in order.
std::optional<MakeContent> sortingOf(const Bytes& content) {
  const PropertyLists::Parsed parsed = parseBookmarks(content);
  const PlistValue inOrder = sorted(parsed.value, true);
  if (inOrder == parsed.value) return std::nullopt;
  return [inOrder, format = parsed.format] { return verifiedBytes(inOrder, format); };
}

}  // namespace

std::optional<Rewrite> sortBookmarkFile(const std::string& path) { return rewriteBookmarkFile(path, sortingOf); }

Bytes sortedContent(const Bytes& content) {
  const std::optional<MakeContent> make = sortingOf(content);
  return make ? (*make)().joined() : content;
}
