// The meaning of a bookmark node's keys.
#include "engine/bookmark_node.h"

#include <gtest/gtest.h>

#include <vector>

#include "engine/sorting_suite.h"
#include "tests/support/virtual_machine.h"

namespace {

// The node as it was built, and as it is read from a file of either format.
std::vector<PlistValue> everyForm(const PlistValue& node) {
  NativePropertyLists codec;
  return {node, codec.parse(codec.serialize(node, PropertyListFormat::binary)).value,
          codec.parse(codec.serialize(node, PropertyListFormat::xml)).value};
}

void expectTitle(const PlistValue& node, const std::u16string& wanted) {
  for (const PlistValue& form : everyForm(node)) EXPECT_EQ(utf8(title(form)), utf8(wanted));
}

void expectFolder(const PlistValue& node, bool wanted) {
  for (const PlistValue& form : everyForm(node)) EXPECT_EQ(folder(form), wanted);
}

PlistValue uri(PlistValue title) { return PlistValue::dictionary({{u"title", std::move(title)}}); }

TEST(Title, prefersTheTitleKeyToTheUriDictionary) {
  expectTitle(PlistValue::dictionary({{u"Title", u"A"}, {u"URIDictionary", uri(u"B")}}), u"A");
  expectTitle(PlistValue::dictionary({{u"URIDictionary", uri(u"B")}, {u"Title", u"A"}}), u"A");
}

TEST(Title, isSkippedIfItIsANumber) {
  expectTitle(PlistValue::dictionary({{u"Title", 5}, {u"URIDictionary", uri(u"x")}}), u"x");
}

TEST(Title, isSkippedIfItIsNotAString) {
  const std::vector<PlistValue> others = {
      5, 1.5, true, PlistDate{1}, Bytes(std::string("x")), PlistValue::array({u"x"}), uri(u"y")};
  for (const PlistValue& other : others) {
    expectTitle(PlistValue::dictionary({{u"Title", other}, {u"URIDictionary", uri(u"x")}}), u"x");
    expectTitle(PlistValue::dictionary({{u"Title", other}}), u"");
  }
}

TEST(Title, isEmptyIfThereIsNone) {
  expectTitle(PlistValue::dictionary({{u"WebBookmarkType", u"WebBookmarkTypeLeaf"}}), u"");
}

TEST(Title, isEmptyForAnEmptyDictionary) { expectTitle(PlistValue::dictionary({}), u""); }

TEST(Title, mayBeAnEmptyString) {
  expectTitle(PlistValue::dictionary({{u"Title", u""}, {u"URIDictionary", uri(u"x")}}), u"");
}

TEST(Title, isEmptyIfTheUriDictionaryIsOfAnotherType) {
  for (const PlistValue& other : {PlistValue(u"title"), PlistValue(5), PlistValue::array({u"title"}), uri(5),
                                  PlistValue::dictionary({}), PlistValue::dictionary({{u"Title", u"x"}})})
    expectTitle(PlistValue::dictionary({{u"URIDictionary", other}}), u"");
}

TEST(Title, isReturnedAsStored) {
  expectTitle(PlistValue::dictionary({{u"Title", u"  Ab \t\u00E9 "}}), u"  Ab \t\u00E9 ");
  expectTitle(PlistValue::dictionary({{u"title", u"wrong case"}, {u"TITLE", u"wrong case"}}), u"");
}

TEST(Folder, isANodeOfTypeList) {
  expectFolder(PlistValue::dictionary({{u"WebBookmarkType", u"WebBookmarkTypeList"}}), true);
}

TEST(Folder, isNotANodeWhoseTypeHasAnotherCase) {
  for (const char16_t* type : {u"webBookmarkTypeList", u"WEBBOOKMARKTYPELIST", u"WebBookmarkTypelist"})
    expectFolder(PlistValue::dictionary({{u"WebBookmarkType", type}}), false);
}

TEST(Folder, isNotANodeOfAnotherType) {
  for (const char16_t* type : {u"WebBookmarkTypeLeaf", u"WebBookmarkTypeProxy", u"WebBookmarkTypeLists",
                               u"WebBookmarkTypeLis", u" WebBookmarkTypeList", u""})
    expectFolder(PlistValue::dictionary({{u"WebBookmarkType", type}}), false);
}

TEST(Folder, isNotANodeWithoutATypeString) {
  expectFolder(PlistValue::dictionary({{u"WebBookmarkType", 5}}), false);
  expectFolder(PlistValue::dictionary({{u"WebBookmarkType", PlistValue::array({u"WebBookmarkTypeList"})}}), false);
  expectFolder(PlistValue::dictionary({{u"Title", u"WebBookmarkTypeList"}}), false);
  expectFolder(PlistValue::dictionary({}), false);
}

TEST(ChildrenOf, areAnArrayOfDictionariesOnly) {
  const auto children = [](const PlistValue& value) -> bool {
    const PlistValue node = PlistValue::dictionary({{u"Children", value}});
    std::vector<bool> found;
    for (const PlistValue& form : everyForm(node)) found.push_back(childrenOf(form).has_value());
    EXPECT_EQ(found, std::vector<bool>(found.size(), found.front()));
    return found.front();
  };
  EXPECT_TRUE(children(PlistValue::array({})));
  EXPECT_TRUE(children(PlistValue::array({PlistValue::dictionary({})})));
  EXPECT_TRUE(children(PlistValue::array({leaf(u"a"), leaf(u"b")})));
  EXPECT_FALSE(children(PlistValue::array({leaf(u"a"), u"b"})));
  EXPECT_FALSE(children(PlistValue::array({leaf(u"a"), PlistValue::array({})})));
  EXPECT_FALSE(children(u"Children"));
  EXPECT_FALSE(children(leaf(u"a")));
}

TEST(Leaf, hasItsNameAsTitleAndIdentifier) {
  const PlistValue node = leaf(u"Item 2");
  EXPECT_EQ(title(node), u"Item 2");
  EXPECT_FALSE(folder(node));
  EXPECT_EQ(node.value(u"WebBookmarkUUID"), PlistValue(u"Item 2"));
}

TEST(Leaf, hasExactlyFourEntries) {
  const PlistValue node = leaf(u"Item 2");
  EXPECT_EQ(node.size(), 4U);
  EXPECT_EQ(node.value(u"WebBookmarkType"), PlistValue(u"WebBookmarkTypeLeaf"));
  EXPECT_EQ(node.value(u"URIDictionary"), uri(u"Item 2"));
  EXPECT_EQ(node.value(u"URLString"), leaf(u"another").value(u"URLString"));
  EXPECT_TRUE(node.value(u"URLString")->is(PlistKind::string));
}

}  // namespace
