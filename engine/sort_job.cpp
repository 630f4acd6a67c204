#include "engine/sort_job.h"

#include "engine/bookmark_file.h"
#include "engine/sort_order.h"
#include "platform/platform.h"

std::optional<Rewrite> sortBookmarkFile(const std::string& path) {
  return rewriteBookmarkFile(path, [](const Bytes& oldBytes) -> std::optional<MakeContent> {
    const PropertyLists::Parsed parsed = parseBookmarks(oldBytes);
    const PlistValue inOrder = sorted(parsed.value, true);
    if (inOrder == parsed.value) return std::nullopt;
    return [inOrder, format = parsed.format] { return platform().propertyLists.serialize(inOrder, format); };
  });
}
