// The ordering rule: case by case, and on random trees against a naive implementation of the rule.
#include "engine/sort_order.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <compare>
#include <string>
#include <vector>

#include "engine/bookmark_node.h"
#include "tests/support/altered_platforms.h"
#include "tests/support/binary_file.h"
#include "tests/support/bookmark_trees.h"
#include "tests/support/random_trees.h"
#include "tests/support/virtual_machine.h"

namespace {

class SortOrderTest : public testing::Test {
 protected:
  // The outline of an inner folder with these children after a sort.
  static std::string order(std::vector<PlistValue> children) {
    return outline(sorted(folderNode(u"folder", std::move(children)), false));
  }

 private:
  VirtualMachine machine_;
};

PlistValue untitledLeaf() { return PlistValue::dictionary({{u"WebBookmarkType", u"WebBookmarkTypeLeaf"}}); }

PlistValue readingList(std::vector<PlistValue> children) {
  return folderNode(u"com.apple.ReadingList", std::move(children));
}

std::vector<PlistValue> zThenA() { return {leafNode(u"z"), leafNode(u"a")}; }

TEST_F(SortOrderTest, putsFoldersFirstAndKeepsOtherTypesInPlace) {
  EXPECT_EQ(order({leafNode(u"b"), proxyNode(u"X"), folderNode(u"a", {})}), "a[] <X> b");
}

TEST_F(SortOrderTest, putsNamesInNaturalOrder) {
  EXPECT_EQ(order({leafNode(u"Item 10"), leafNode(u"apple"), leafNode(u"Item 2"), folderNode(u"Z folder", {})}),
            "Z folder[] apple Item 2 Item 10");
}

TEST_F(SortOrderTest, keepsEqualTitlesInTheirOrder) {
  const auto numbered = [](int number) {
    return PlistValue::dictionary(
        {{u"Title", u"same"}, {u"WebBookmarkType", u"WebBookmarkTypeLeaf"}, {u"number", number}});
  };
  std::vector<PlistValue> children = {leafNode(u"z")};
  for (int number = 0; number < 100; ++number) children.push_back(numbered(number));
  const PlistValue result = *sorted(folderNode(u"folder", children), false).value(u"Children");
  for (int number = 0; number < 100; ++number) EXPECT_EQ(result.at(static_cast<std::size_t>(number)), numbered(number));
}

TEST_F(SortOrderTest, ordersTitlesThatDifferOnlyInCase) {
  EXPECT_EQ(order({leafNode(u"item"), leafNode(u"Item")}), order({leafNode(u"Item"), leafNode(u"item")}));
}

TEST_F(SortOrderTest, putsBookmarksWithoutATitleFirst) {
  EXPECT_EQ(order({leafNode(u"a"), untitledLeaf(), leafNode(u"!")}), " ! a");
  EXPECT_EQ(order({leafNode(u"a"), leafNode(u"")}), " a");
}

TEST_F(SortOrderTest, putsAFolderWithoutATitleBeforeBookmarks) {
  EXPECT_EQ(order({leafNode(u"a"), folderNode(u"z", {}), folderNode(u"", {})}), "[] z[] a");
}

TEST_F(SortOrderTest, keepsTheRootsOwnChildrenInTheirOrder) {
  const std::vector<PlistValue> children = {folderNode(u"z", zThenA()), leafNode(u"y"), folderNode(u"b", zThenA())};
  EXPECT_EQ(outline(sorted(rootNode(children), true)), "z[a z] y b[a z]");
  EXPECT_EQ(outline(sorted(rootNode(children), false)), "b[a z] z[a z] y");
}

TEST_F(SortOrderTest, keepsTheOrderOfBarAndListInTheRootOnly) {
  const std::vector<PlistValue> children = {leafNode(u"zebra"), folderNode(u"BookmarksBar", {}), readingList(zThenA())};
  EXPECT_EQ(outline(sorted(rootNode(children), true)), "zebra BookmarksBar[] com.apple.ReadingList[z a]");
  EXPECT_EQ(order(children), "BookmarksBar[] zebra com.apple.ReadingList[z a]");
}

TEST_F(SortOrderTest, leavesTheReadingListUnchanged) {
  EXPECT_EQ(outline(sorted(rootNode({readingList(zThenA())}), true)), "com.apple.ReadingList[z a]");
}

TEST_F(SortOrderTest, leavesTheReadingListUnchangedEvenAsTheRoot) {
  // A root keeps its own entries in place, so only a folder inside shows whether the list is skipped.
  const PlistValue list = readingList({folderNode(u"folder", zThenA())});
  EXPECT_EQ(outline(sorted(list, true)), "folder[z a]");
  EXPECT_EQ(sorted(list, true), list);
}

TEST_F(SortOrderTest, leavesTheReadingListUnchangedThreeLevelsDeep) {
  const PlistValue list = readingList({folderNode(u"folder", zThenA()), leafNode(u"a")});
  EXPECT_EQ(
      outline(sorted(rootNode({folderNode(u"1", {folderNode(u"2", {leafNode(u"z"), list, leafNode(u"a")})})}), true)),
      "1[2[a com.apple.ReadingList[folder[z a] a] z]]");
}

TEST_F(SortOrderTest, identifiesTheReadingListByItsExactTitle) {
  EXPECT_EQ(order({folderNode(u"com.apple.readinglist", zThenA())}), "com.apple.readinglist[a z]");
  EXPECT_EQ(order({folderNode(u"com.apple.ReadingList ", zThenA())}), "com.apple.ReadingList [a z]");
}

TEST_F(SortOrderTest, leavesAnyNodeWithTheReadingListsTitle) {
  // The title may come from the URIDictionary, and the type does not matter.
  const PlistValue untyped =
      PlistValue::dictionary({{u"URIDictionary", PlistValue::dictionary({{u"title", u"com.apple.ReadingList"}})},
                              {u"Children", PlistValue::array(zThenA())}});
  EXPECT_EQ(sorted(untyped, false), untyped);
}

TEST_F(SortOrderTest, sortsInsideReservedEntriesButKeepsTheirPlaces) {
  EXPECT_EQ(order({leafNode(u"b"), folderNode(u"com.apple.Something", zThenA()), leafNode(u"com.apple.leaf"),
                   leafNode(u"a"), folderNode(u"c", {})}),
            "c[] com.apple.Something[a z] com.apple.leaf a b");
}

TEST_F(SortOrderTest, matchesTheReservedPrefixExactly) {
  EXPECT_EQ(order({leafNode(u"com.apples"), leafNode(u"Com.apple.b"), leafNode(u"com.apple"), leafNode(u"a")}),
            "a com.apple Com.apple.b com.apples");
}

TEST_F(SortOrderTest, sortsInsideEntriesOfOtherTypesButKeepsTheirPlaces) {
  const PlistValue typeless =
      PlistValue::dictionary({{u"Title", u"typeless"}, {u"Children", PlistValue::array(zThenA())}});
  const PlistValue children =
      *sorted(folderNode(u"f", {leafNode(u"b"), typeless, leafNode(u"a")}), false).value(u"Children");
  EXPECT_EQ(title(children.at(1)), u"typeless");
  EXPECT_EQ(outline(children.at(1)), "a z");
  EXPECT_EQ(title(children.at(0)), u"a");
}

TEST_F(SortOrderTest, keepsAnEmptyDictionaryInItsPlace) {
  const PlistValue empty = PlistValue::dictionary({});
  EXPECT_EQ(order({leafNode(u"b"), empty, leafNode(u"a")}), "a <> b");
  EXPECT_EQ(sorted(empty, false), empty);
  EXPECT_EQ(sorted(empty, true), empty);
}

TEST_F(SortOrderTest, leavesAFolderWithAStringAmongItsChildren) {
  const PlistValue node = folderNode(u"folder", {folderNode(u"z", zThenA()), u"a string", leafNode(u"a")});
  EXPECT_EQ(sorted(node, false), node);
  EXPECT_EQ(sorted(node, true), node);
  EXPECT_EQ(sorted(rootNode({node}), true), rootNode({node}));
}

TEST_F(SortOrderTest, leavesAFolderWithoutAnArrayOfChildren) {
  for (const PlistValue& children : {PlistValue(u"x"), PlistValue(1), leafNode(u"a")}) {
    const PlistValue node =
        PlistValue::dictionary({{u"Children", children}, {u"WebBookmarkType", u"WebBookmarkTypeList"}});
    EXPECT_EQ(sorted(node, false), node);
  }
  const PlistValue childless = PlistValue::dictionary({{u"WebBookmarkType", u"WebBookmarkTypeList"}});
  EXPECT_EQ(sorted(childless, false), childless);
}

TEST_F(SortOrderTest, sortsAFolderWithoutValidChildrenAmongItsSiblings) {
  const PlistValue broken =
      PlistValue::dictionary({{u"Title", u"b"}, {u"Children", u"none"}, {u"WebBookmarkType", u"WebBookmarkTypeList"}});
  const PlistValue result = sorted(folderNode(u"f", {leafNode(u"a"), broken}), false);
  EXPECT_EQ(result.value(u"Children")->at(0), broken);
}

TEST_F(SortOrderTest, keepsAnEmptyArrayOfChildren) {
  const PlistValue node = folderNode(u"folder", {});
  EXPECT_EQ(sorted(node, false), node);
  EXPECT_EQ(sorted(node, false).value(u"Children"), PlistValue::array({}));
}

TEST_F(SortOrderTest, doesNotChangeItsArgument) {
  const PlistValue node = folderNode(u"folder", zThenA());
  EXPECT_EQ(outline(sorted(node, false)), "a z");
  EXPECT_EQ(outline(node), "z a");
}

TEST_F(SortOrderTest, ordersLongAndEmptyTitlesThatShareStorage) {
  const std::u16string longTitle(1000, u'x');
  const PlistValue file = folderNode(
      u"f", {leafNode(longTitle), leafNode(u""), leafNode(longTitle + u"a"), leafNode(longTitle), leafNode(u"")});
  NativePropertyLists codec;
  for (const PropertyListFormat format : {PropertyListFormat::binary, PropertyListFormat::xml}) {
    const PlistValue stored = codec.parse(codec.serialize(file, format)).value;
    const PlistValue result = *sorted(stored, false).value(u"Children");
    const std::vector<std::u16string> wanted = {u"", u"", longTitle, longTitle, longTitle + u"a"};
    for (std::size_t index = 0; index < wanted.size(); ++index) EXPECT_EQ(title(result.at(index)), wanted[index]);
  }
}

TEST_F(SortOrderTest, comparesSharedLongTitlesOnce) {
  BinaryFile file(2);
  const std::u16string start(1000, u'x');
  const std::vector<std::uint32_t> shared = {file.leaf(utf8(start + u"b")), file.folder(utf8(start + u"c"), {}),
                                             file.leaf("short"), file.leaf(utf8(start + u"a"))};
  std::vector<std::uint32_t> children;
  for (std::size_t index = 0; index < 10'000; ++index) children.push_back(shared[index % shared.size()]);
  const PlistValue root = NativePropertyLists().parse(file.bytes(file.folder("all", children))).value;
  int comparisons = 0;
  ReportingCollation collation(platform().collation, [&] { ++comparisons; });
  const Platform altered = with(collation);
  const PlatformScope counting(altered);
  const PlistValue inOrder = *sorted(root, false).value(u"Children");
  EXPECT_LT(comparisons, 20);
  ASSERT_EQ(inOrder.size(), children.size());
  const std::vector<std::u16string> wanted = {start + u"c", u"short", start + u"a", start + u"b"};
  for (std::size_t index = 0; index < inOrder.size(); ++index)
    EXPECT_EQ(title(inOrder.at(index)), wanted[index / (inOrder.size() / wanted.size())]);
}

// Counts the units of the titles that are compared.
class UnitCountingCollation : public Collation {
 public:
  explicit UnitCountingCollation(const Collation& collation) : collation_(collation) {}
  std::strong_ordering localizedStandardCompare(std::u16string_view a, std::u16string_view b) const override {
    units_ += a.size() + b.size();
    return collation_.localizedStandardCompare(a, b);
  }
  std::size_t units() const { return units_; }

 private:
  const Collation& collation_;
  mutable std::size_t units_ = 0;
};

// Sorts a folder of a file, and expects that this compares little more than the size of the file at most 40 times.
PlistValue sortedWithFewComparisons(const Bytes& file) {
  const PlistValue root = NativePropertyLists().parse(file).value;
  UnitCountingCollation collation(platform().collation);
  const Platform altered = with(collation);
  const PlatformScope counting(altered);
  PlistValue inOrder = *sorted(root, false).value(u"Children");
  EXPECT_LT(collation.units(), 40 * (file.size() + (std::size_t{1} << 20)));
  return inOrder;
}

TEST_F(SortOrderTest, comparesSharedShortTitlesOnce) {
  BinaryFile file(2);
  std::vector<std::uint32_t> leaves;
  for (int number = 99; number >= 0; --number)
    leaves.push_back(file.leaf(std::string(250, 'x') + std::to_string(100 + number)));
  std::vector<std::uint32_t> children;
  for (std::size_t index = 0; index < 100'000; ++index) children.push_back(leaves[index % leaves.size()]);
  const PlistValue inOrder = sortedWithFewComparisons(file.bytes(file.folder("all", children)));
  ASSERT_EQ(inOrder.size(), children.size());
  for (std::size_t index = 1; index < inOrder.size(); ++index)
    EXPECT_EQ(title(inOrder.at(index)) == title(inOrder.at(index - 1)), index % 1000 != 0);
}

TEST_F(SortOrderTest, comparesTitlesOnceForAllFolders) {
  BinaryFile file(2);
  std::vector<std::uint32_t> leaves;
  for (char last = 'p'; last >= 'a'; --last) leaves.push_back(file.leaf(std::string(5000, 'x') + last));
  std::vector<std::uint32_t> folders;
  folders.reserve(5000);
  for (int number = 0; number < 5000; ++number) folders.push_back(file.folder("f", leaves));
  const PlistValue inOrder = sortedWithFewComparisons(file.bytes(file.folder("all", folders)));
  for (const std::size_t index : {0U, 15U})
    EXPECT_EQ(title(inOrder.at(4999).value(u"Children")->at(index)).back(), u'a' + index);
}

TEST_F(SortOrderTest, comparesALongTitleRarely) {
  BinaryFile file(2);
  std::vector<std::uint32_t> children;
  for (int number = 10'000; number > 0; --number) {
    if (number == 5000) children.push_back(file.leaf(std::string(200'000, '\x01') + "a"));
    children.push_back(file.leaf(std::to_string(number)));
  }
  const PlistValue inOrder = sortedWithFewComparisons(file.bytes(file.folder("all", children)));
  EXPECT_EQ(title(inOrder.at(0)), u"1");
  EXPECT_EQ(title(inOrder.at(10'000)).size(), 200'001U);
}

TEST_F(SortOrderTest, sortsAListThatFoldersShareOnce) {
  BinaryFile file;
  const std::uint32_t list = file.array({file.leaf("z"), file.leaf("a")});
  const auto folderWith = [&](const std::string& title) {
    return file.dictionary({file.string("WebBookmarkType"), file.string("Title"), file.string("Children")},
                           {file.string("WebBookmarkTypeList"), file.string(title), list});
  };
  const std::uint32_t top = file.folder("", {folderWith("1"), folderWith("2"), folderWith("com.apple.ReadingList")});
  const PlistValue root = NativePropertyLists().parse(file.bytes(top)).value;
  const PlistValue inOrder = sorted(root, true);
  EXPECT_EQ(outline(inOrder), "1[a z] 2[a z] com.apple.ReadingList[z a]");
  const PlistValue folders = *inOrder.value(u"Children");
  EXPECT_EQ(folders.at(0).value(u"Children")->identity(), folders.at(1).value(u"Children")->identity());
  int changes = 0;
  reportChanges(root, true,
                [&](const PlistValue&, const FolderOrder& order) { changes += order.places.empty() ? 0 : 1; });
  EXPECT_EQ(changes, 1);
}

TEST_F(SortOrderTest, readsASharedLargeEntryInLinearTime) {
  constexpr std::uint32_t many = 300'000;  // quadratic time would take minutes
  BinaryFile file(4);
  const std::uint32_t text = file.string("text");
  std::vector<std::uint32_t> keys;
  for (std::uint32_t number = 0; number < many; ++number) keys.push_back(file.string("key " + std::to_string(number)));
  keys.push_back(file.string("WebBookmarkType"));
  keys.push_back(file.string("Title"));
  std::vector<std::uint32_t> values(many, text);
  values.push_back(file.string("WebBookmarkTypeLeaf"));
  values.push_back(file.string("z"));
  std::vector<std::uint32_t> children(many, file.dictionary(keys, values));
  children.push_back(file.leaf("a"));
  const PlistValue root = NativePropertyLists().parse(file.bytes(file.folder("all", children))).value;
  const PlistValue inOrder = *sorted(root, false).value(u"Children");
  EXPECT_EQ(title(inOrder.at(0)), u"a");
  EXPECT_EQ(title(inOrder.at(1)), u"z");
  EXPECT_EQ(title(inOrder.at(many)), u"z");
}

TEST(Sortable, areFoldersAndBookmarksThatAreNotReserved) {
  EXPECT_TRUE(sortable(leafNode(u"a")));
  EXPECT_TRUE(sortable(folderNode(u"a", {})));
  EXPECT_TRUE(sortable(untitledLeaf()));
  EXPECT_FALSE(sortable(proxyNode(u"a")));
  EXPECT_FALSE(sortable(PlistValue::dictionary({})));
  EXPECT_FALSE(sortable(PlistValue::dictionary({{u"Title", u"a"}})));
  EXPECT_FALSE(sortable(PlistValue::dictionary({{u"WebBookmarkType", 1}})));
  EXPECT_FALSE(sortable(leafNode(u"com.apple.")));
  EXPECT_FALSE(sortable(folderNode(u"com.apple.x", {})));
  EXPECT_TRUE(sortable(leafNode(u"Com.apple.x")));
  EXPECT_TRUE(sortable(leafNode(u"com.apple")));
}

// The rule implemented step by step on whole copies, without regard to speed.
std::u16string titleByRule(const PlistValue& node) {
  if (node.size() == 0) return u"";
  if (const auto own = node.value(u"Title"))
    if (const auto text = own->string()) return text->utf16();
  if (const auto display = node.value(u"URIDictionary"))
    if (const auto own = display->value(u"title"))
      if (const auto text = own->string()) return text->utf16();
  return u"";
}

bool isFolderByRule(const PlistValue& node) {
  return node.value(u"WebBookmarkType") == PlistValue(u"WebBookmarkTypeList");
}

bool isSortableByRule(const PlistValue& child) {
  if (child.size() == 0) return false;
  if (!isFolderByRule(child) && child.value(u"WebBookmarkType") != PlistValue(u"WebBookmarkTypeLeaf")) return false;
  return titleByRule(child).rfind(u"com.apple.", 0) != 0;
}

bool goesBeforeByRule(const PlistValue& a, const PlistValue& b) {
  if (isFolderByRule(a) != isFolderByRule(b)) return isFolderByRule(a);
  return platform().collation.localizedStandardCompare(titleByRule(a), titleByRule(b)) == std::strong_ordering::less;
}

std::optional<std::vector<PlistValue>> childrenByRule(const PlistValue& node) {
  const std::optional<PlistValue> array = node.value(u"Children");
  if (!array || !array->is(PlistKind::array)) return std::nullopt;
  std::vector<PlistValue> list;
  for (std::size_t index = 0; index < array->size(); ++index) {
    list.push_back(array->at(index));
    if (!list.back().is(PlistKind::dictionary)) return std::nullopt;
  }
  return list;
}

PlistValue withChildren(const PlistValue& node, const std::vector<PlistValue>& list) {
  std::vector<PlistEntry> entries;
  for (std::size_t index = 0; index < node.size(); ++index) {
    const std::u16string key = node.keyAt(index).utf16();
    entries.push_back({key, key == u"Children" ? PlistValue::array(list) : node.valueAt(index)});
  }
  return PlistValue::dictionary(std::move(entries));
}

PlistValue sortedByRule(const PlistValue& node, bool root) {
  if (titleByRule(node) == u"com.apple.ReadingList") return node;
  std::optional<std::vector<PlistValue>> list = childrenByRule(node);
  if (!list) return node;
  for (PlistValue& child : *list) child = sortedByRule(child, false);
  if (root) return withChildren(node, *list);
  std::vector<PlistValue> inOrder;
  for (const PlistValue& child : *list) {
    if (!isSortableByRule(child)) continue;
    auto place = inOrder.end();  // behind all entries that it does not precede
    while (place != inOrder.begin() && goesBeforeByRule(child, *(place - 1))) --place;
    inOrder.insert(place, child);
  }
  std::size_t next = 0;
  for (PlistValue& child : *list)
    if (isSortableByRule(child)) child = inOrder[next++];
  return withChildren(node, *list);
}

// A text that is equal for two trees exactly if they differ at most in the order of children.
std::string withoutOrder(const PlistValue& node) {
  const auto list = childrenByRule(node);
  if (!list) return std::string(NativePropertyLists().serialize(node, PropertyListFormat::xml).text());
  std::vector<std::string> parts;
  for (const PlistValue& child : *list) parts.push_back(withoutOrder(child));
  std::sort(parts.begin(), parts.end());
  const Bytes rest = NativePropertyLists().serialize(withChildren(node, {}), PropertyListFormat::xml);
  std::string text(rest.text());
  for (const std::string& part : parts) text += "(" + part + ")";
  return text;
}

// Expects in every folder that sub-folders precede bookmarks and that fixed entries keep their places.
void expectPlaces(const PlistValue& before, const PlistValue& after, bool root) {
  const auto old = childrenByRule(before);
  if (!old) return;
  const auto now = childrenByRule(after);
  ASSERT_TRUE(now && now->size() == old->size());
  if (titleByRule(before) == u"com.apple.ReadingList") {
    EXPECT_EQ(after, before);
    return;
  }
  bool bookmarkSeen = false;
  for (std::size_t index = 0; index < old->size(); ++index) {
    EXPECT_EQ(isSortableByRule((*old)[index]), isSortableByRule((*now)[index]));
    if (root || !isSortableByRule((*old)[index])) {
      EXPECT_EQ(withoutOrder((*old)[index]), withoutOrder((*now)[index])) << "moved from " << index;
      expectPlaces((*old)[index], (*now)[index], false);
      continue;
    }
    const bool isFolder = isFolderByRule((*now)[index]);
    EXPECT_FALSE(bookmarkSeen && isFolder) << "a folder behind a bookmark, at " << index;
    bookmarkSeen = bookmarkSeen || !isFolder;
  }
}

class RandomTrees : public RandomTreeTest {
 protected:
  VirtualMachine machine_;
  NativePropertyLists codec_;
};

TEST_F(RandomTrees, areSortedByTheWrittenRule) {
  unsigned moved = 0;
  forEachTree([&](const PlistValue& tree) {
    for (const bool root : {true, false}) {
      const PlistValue result = sorted(tree, root);
      const PlistValue wanted = sortedByRule(tree, root);
      EXPECT_EQ(result, wanted);
      // Compare the bytes too, because they also depend on the order of keys.
      EXPECT_EQ(codec_.serialize(result, PropertyListFormat::xml), codec_.serialize(wanted, PropertyListFormat::xml));
      moved += wanted == tree ? 0 : 1;
    }
  });
  EXPECT_GT(moved, trees() / 2) << "too few trees needed sorting";
}

TEST_F(RandomTrees, areSortedAlikeFromMemoryAndFromAFile) {
  forEachTree([&](const PlistValue& tree) {
    const Bytes wanted = codec_.serialize(sortedByRule(tree, true), PropertyListFormat::xml);
    for (const PropertyListFormat format : {PropertyListFormat::binary, PropertyListFormat::xml}) {
      const PlistValue stored = codec_.parse(codec_.serialize(tree, format)).value;
      const PlistValue result = sorted(stored, true);
      const Bytes written = codec_.serialize(result, format);
      EXPECT_EQ(codec_.serialize(codec_.parse(written).value, PropertyListFormat::xml), wanted);
      EXPECT_TRUE(codec_.parsesTo(result, codec_.serializeInPieces(result, format)));
      EXPECT_EQ(result == stored, sortedByRule(tree, true) == tree);
    }
  });
}

TEST_F(RandomTrees, areUnchangedByASecondSort) {
  forEachTree([&](const PlistValue& tree) {
    const PlistValue once = sorted(tree, true);
    EXPECT_EQ(sorted(once, true), once);
    EXPECT_EQ(sorted(once, true).identity(), once.identity());
  });
}

TEST_F(RandomTrees, changeOnlyInTheOrderOfChildren) {
  forEachTree([&](const PlistValue& tree) { EXPECT_EQ(withoutOrder(sorted(tree, true)), withoutOrder(tree)); });
}

TEST_F(RandomTrees, haveFoldersFirstAndFixedEntriesInTheirPlaces) {
  forEachTree([&](const PlistValue& tree) {
    expectPlaces(tree, sorted(tree, true), true);
    expectPlaces(tree, sorted(tree, false), false);
  });
}

}  // namespace
