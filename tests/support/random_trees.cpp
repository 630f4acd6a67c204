#include "tests/support/random_trees.h"

#include <algorithm>
#include <cstdint>
#include <utility>
#include <vector>

std::size_t TreeMaker::below(std::size_t limit) {
  return std::uniform_int_distribution<std::size_t>(0, limit - 1)(random_);
}

PlistValue TreeMaker::randomTitle() {
  static const std::vector<std::u16string> titles = {u"",
                                                     u"a",
                                                     u"A",
                                                     u"b",
                                                     u"B",
                                                     u"item 2",
                                                     u"Item 2",
                                                     u"item 10",
                                                     u"Item 10",
                                                     u"item 02",
                                                     u"\u00E9",
                                                     u"e\u0301",
                                                     u"z\u00E9",
                                                     u"\U0001F600",
                                                     u"com.apple.ReadingList",
                                                     u"com.apple.x",
                                                     u"com.apple.",
                                                     u"com.apple",
                                                     u"\u0416",
                                                     u" a",
                                                     std::u16string(300, u'l'),
                                                     std::u16string(300, u'l') + u"1"};
  if (oneIn(15)) return 5;
  return titles[below(titles.size())];
}

PlistValue TreeMaker::randomType() {
  if (oneIn(12)) return 1;
  static const std::vector<std::u16string> types = {u"WebBookmarkTypeProxy", u"webbookmarktypelist", u""};
  return types[below(types.size())];
}

PlistValue TreeMaker::children(unsigned levels) {
  if (oneIn(20)) return u"no array";
  std::vector<PlistValue> list;
  for (std::size_t count = below(9); count > 0; --count) {
    // Sometimes repeat a node, so that the tree shares storage.
    const bool again = !list.empty() && oneIn(8);
    list.push_back(again ? list[below(list.size())] : node(levels));
  }
  if (oneIn(25)) list.emplace_back(u"a string");
  return PlistValue::array(std::move(list));
}

PlistValue TreeMaker::node(unsigned levels) {
  std::vector<PlistEntry> entries;
  const bool isFolder = levels > 0 && !oneIn(3);
  if (oneIn(30)) return PlistValue::dictionary({});
  if (oneIn(6)) entries.push_back({u"Sync", PlistValue::dictionary({{u"Key", 1}, {u"Date", PlistDate{1.5}}})});
  if (isFolder) entries.push_back({u"Children", children(levels - 1)});
  if (isFolder != oneIn(8)) entries.push_back({u"Title", randomTitle()});
  if (!isFolder || oneIn(5)) entries.push_back({u"URIDictionary", display()});
  entries.push_back({u"WebBookmarkUUID", static_cast<std::uint64_t>(below(1000))});
  if (oneIn(8))
    entries.push_back({u"WebBookmarkType", randomType()});
  else if (!oneIn(10))
    entries.push_back({u"WebBookmarkType", isFolder ? u"WebBookmarkTypeList" : u"WebBookmarkTypeLeaf"});
  std::shuffle(entries.begin(), entries.end(), random_);
  return PlistValue::dictionary(std::move(entries));
}

PlistValue TreeMaker::display() {
  if (oneIn(12)) return u"not a dictionary";
  return PlistValue::dictionary({{u"title", randomTitle()}});
}
