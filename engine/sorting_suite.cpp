#include "engine/sorting_suite.h"

#include <string>
#include <utility>
#include <vector>

#include "engine/bookmark_node.h"
#include "engine/sort_order.h"
#include "values/require.h"

namespace {

PlistValue list(std::u16string_view name, std::vector<PlistValue> children) {
  return PlistValue::dictionary({{u"Title", name},
                                 {u"WebBookmarkType", bookmark::listType.units()},
                                 {u"Children", PlistValue::array(std::move(children))}});
}

PlistValue child(const PlistValue& node, std::size_t index) {
  const PlistValue children = required(node.value(bookmark::children));
  require(children.is(PlistKind::array) && index < children.size());
  return children.at(index);
}

bool hasTitles(const PlistValue& node, const std::vector<std::u16string>& titles) {
  const PlistValue children = required(node.value(bookmark::children));
  require(children.is(PlistKind::array));
  std::vector<std::u16string> found;
  for (std::size_t index = 0; index < children.size(); ++index) found.push_back(title(children.at(index)));
  return found == titles;
}

}  // namespace

PlistValue leaf(std::u16string_view name) {
  return PlistValue::dictionary({{u"WebBookmarkType", bookmark::leafType.units()},
                                 {u"URIDictionary", PlistValue::dictionary({{u"title", name}})},
                                 {u"URLString", u"https://bookmark.example/"},
                                 {u"WebBookmarkUUID", name}});
}

void runSortingSuite() { runSortingSuite(sorted); }

void runSortingSuite(const SortFunction& sort) {
  const PlistValue readingList = list(bookmark::readingListTitle.units(), {leaf(u"z"), leaf(u"a")});
  const PlistValue folderZ = list(u"Z folder", {leaf(u"z"), leaf(u"a")});
  const PlistValue bar = list(u"BookmarksBar", {leaf(u"Item 10"), leaf(u"apple"), folderZ, leaf(u"Item 2")});
  const PlistValue root =
      PlistValue::dictionary({{u"Title", u"root"}, {u"Children", PlistValue::array({bar, readingList})}});

  const PlistValue result = sort(root, true);
  require(hasTitles(child(result, 0), {u"Z folder", u"apple", u"Item 2", u"Item 10"}));
  require(hasTitles(child(child(result, 0), 0), {u"a", u"z"}));
  require(child(result, 1) == readingList);
  require(sort(result, true) == result);
}
