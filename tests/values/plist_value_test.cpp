// Values: their kinds, equality and sharing.
#include "values/plist_value.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <limits>
#include <stdexcept>
#include <string>
#include <vector>

#include "engine/sort_order.h"
#include "tests/support/bookmark_trees.h"
#include "tests/support/plist_json.h"
#include "tests/support/virtual_machine.h"

namespace {

constexpr std::int64_t smallest = std::numeric_limits<std::int64_t>::min();
constexpr std::int64_t largestSigned = std::numeric_limits<std::int64_t>::max();
constexpr std::uint64_t largest = std::numeric_limits<std::uint64_t>::max();
constexpr double nan = std::numeric_limits<double>::quiet_NaN();
constexpr double infinity = std::numeric_limits<double>::infinity();

Bytes bytes(std::string text) { return Bytes(std::move(text)); }

// The value as the reader of a format returns it: a record of a document, with text in the encoding of the format.
PlistValue inDocument(const PlistValue& value, PropertyListFormat format) {
  NativePropertyLists codec;
  return codec.parse(codec.serialize(value, format)).value;
}

// Values that are all different.
std::vector<PlistValue> differentValues() {
  return {u"",
          u"1",
          u"\u00E9",
          u"e\u0301",
          0,
          1,
          -1,
          largest,
          smallest,
          largestSigned,
          0.0,
          -0.0,
          1.0,
          nan,
          infinity,
          -infinity,
          true,
          false,
          PlistDate{0},
          PlistDate{1},
          PlistDate{1.5},
          bytes(""),
          bytes("1"),
          bytes(std::string("1\0", 2)),
          PlistValue::array({}),
          PlistValue::array({1}),
          PlistValue::array({1, 2}),
          PlistValue::array({2, 1}),
          PlistValue::array({PlistValue::array({})}),
          PlistValue::dictionary({}),
          PlistValue::dictionary({{u"1", 1}}),
          PlistValue::dictionary({{u"1", 2}}),
          PlistValue::dictionary({{u"2", 1}}),
          PlistValue::dictionary({{u"1", 1}, {u"2", 2}}),
          PlistValue::dictionary({{u"1", PlistValue::dictionary({})}})};
}

TEST(PlistValue, hasExactlyOneKind) {
  const std::vector<std::pair<PlistValue, PlistKind>> kinds = {
      {u"a", PlistKind::string},
      {1, PlistKind::integer},
      {1.0, PlistKind::real},
      {true, PlistKind::boolean},
      {PlistDate{1}, PlistKind::date},
      {bytes("a"), PlistKind::data},
      {PlistValue::array({1}), PlistKind::array},
      {PlistValue::dictionary({{u"a", 1}}), PlistKind::dictionary}};
  for (const auto& [built, kind] : kinds)
    for (const PlistValue& value :
         {built, inDocument(built, PropertyListFormat::binary), inDocument(built, PropertyListFormat::xml)}) {
      EXPECT_EQ(value.kind(), kind);
      EXPECT_TRUE(value.is(kind));
      EXPECT_EQ(value.string().has_value(), kind == PlistKind::string);
      EXPECT_EQ(value.integer().has_value(), kind == PlistKind::integer);
      EXPECT_EQ(value.real().has_value(), kind == PlistKind::real);
      EXPECT_EQ(value.boolean().has_value(), kind == PlistKind::boolean);
      EXPECT_EQ(value.date().has_value(), kind == PlistKind::date);
      EXPECT_EQ(value.data().has_value(), kind == PlistKind::data);
      EXPECT_EQ(value.size(), kind == PlistKind::array || kind == PlistKind::dictionary ? 1U : 0U);
      EXPECT_EQ(value.value(u"a").has_value(), kind == PlistKind::dictionary);
    }
}

TEST(PlistValue, equalsOnlyItself) {
  const std::vector<PlistValue> values = differentValues();
  for (std::size_t a = 0; a < values.size(); ++a)
    for (std::size_t b = 0; b < values.size(); ++b) {
      EXPECT_EQ(values[a] == values[b], a == b) << toJson(values[a]) << " and " << toJson(values[b]);
      EXPECT_EQ(PlistValue::array({values[a]}) == PlistValue::array({values[b]}), a == b);
      EXPECT_EQ(PlistValue::dictionary({{u"k", values[a]}}) == PlistValue::dictionary({{u"k", values[b]}}), a == b);
    }
}

TEST(PlistValue, equalsItselfInADocument) {
  for (const PlistValue& value : differentValues()) {
    const PlistValue stored = inDocument(value, PropertyListFormat::binary);
    EXPECT_EQ(stored, value) << toJson(value);
    EXPECT_EQ(value, stored) << toJson(value);
    EXPECT_EQ(stored, inDocument(value, PropertyListFormat::binary)) << toJson(value);
    EXPECT_EQ(deepCopy(stored), value) << toJson(value);
  }
}

TEST(PlistValue, keepsItsIdentityWhenCopied) {
  for (const PlistValue& value : differentValues()) {
    const PlistValue copy = value;  // NOLINT(performance-unnecessary-copy-initialization): that is the test
    EXPECT_EQ(copy, value);
    EXPECT_EQ(copy.identity(), value.identity());
  }
}

TEST(PlistValue, equalsWithKeysInAnotherOrder) {
  const PlistValue value = PlistValue::dictionary({{u"a", 1}, {u"b", 2}, {u"c", PlistValue::array({1, 2})}});
  const PlistValue other = PlistValue::dictionary({{u"c", PlistValue::array({1, 2})}, {u"a", 1}, {u"b", 2}});
  EXPECT_EQ(value, other);
  EXPECT_EQ(inDocument(value, PropertyListFormat::xml), other);
  EXPECT_EQ(inDocument(value, PropertyListFormat::xml), inDocument(other, PropertyListFormat::binary));
  EXPECT_FALSE(value == PlistValue::dictionary({{u"c", PlistValue::array({1, 2})}, {u"a", 2}, {u"b", 1}}));
  EXPECT_FALSE(value == PlistValue::dictionary({{u"c", PlistValue::array({2, 1})}, {u"a", 1}, {u"b", 2}}));
}

TEST(PlistValue, keepsTheOrderOfKeys) {
  const PlistValue value = PlistValue::dictionary({{u"b", 1}, {u"a", 2}, {u"c", 3}});
  EXPECT_EQ(value.keyAt(0).utf16(), u"b");
  EXPECT_EQ(value.keyAt(1).utf16(), u"a");
  EXPECT_EQ(value.keyAt(2).utf16(), u"c");
  EXPECT_EQ(value.valueAt(2), PlistValue(3));
}

TEST(PlistValue, keepsTheFirstOfEqualKeys) {
  const PlistValue value = PlistValue::dictionary({{u"a", 1}, {u"b", 2}, {u"a", 3}});
  EXPECT_EQ(value, PlistValue::dictionary({{u"a", 1}, {u"b", 2}}));
}

TEST(PlistValue, refusesAKeyThatIsNotAString) { EXPECT_THROW(PlistValue::dictionary({{1, 1}}), std::invalid_argument); }

TEST(PlistValue, findsKeysAndReportsMissingKeys) {
  const PlistValue value = PlistValue::dictionary({{u"a", 1}, {u"\u00E9", 2}, {u"A", 3}});
  for (const PlistValue& each :
       {value, inDocument(value, PropertyListFormat::binary), inDocument(value, PropertyListFormat::xml)}) {
    EXPECT_EQ(each.value(u"\u00E9"), PlistValue(2));
    EXPECT_EQ(each.value(u"A"), PlistValue(3));
    EXPECT_FALSE(each.value(u"e\u0301"));
    EXPECT_FALSE(each.indexOf(u"b"));
    const auto [first, none, second] = each.indicesOf(std::array<PlistKey, 3>{u"A", u"b", u"a"});
    EXPECT_EQ(none, PlistValue::absent);
    ASSERT_LT(std::max(first, second), each.size());
    EXPECT_EQ(each.keyAt(first).utf16(), u"A");
    EXPECT_EQ(each.keyAt(second).utf16(), u"a");
  }
}

TEST(PlistValue, findsNoKeyInALargeArray) {
  // More elements than a dictionary may have without an index, and as many more behind them in the document.
  const PlistValue built = PlistValue::array(
      {PlistValue::array(std::vector<PlistValue>(100, u"a")), PlistValue::array(std::vector<PlistValue>(300, u"a"))});
  for (const PlistValue& each :
       {built, inDocument(built, PropertyListFormat::binary), inDocument(built, PropertyListFormat::xml)}) {
    EXPECT_FALSE(each.at(0).indexOf(u"a"));
    EXPECT_FALSE(each.at(1).value(u"a"));
  }
}

TEST(PlistValue, findsKeysInALargeDictionary) {
  std::vector<PlistEntry> entries;
  entries.reserve(100);
  for (int key = 0; key < 100; ++key) entries.push_back({utf16("key " + std::to_string(key)), key});
  const PlistValue built = PlistValue::dictionary(entries);
  for (const PlistValue& each :
       {built, inDocument(built, PropertyListFormat::binary), inDocument(built, PropertyListFormat::xml)})
    for (int key = 0; key < 100; ++key) {
      const std::u16string name = utf16("key " + std::to_string(key));
      EXPECT_EQ(each.value(PlistKey(name)), PlistValue(key));
      EXPECT_FALSE(each.value(PlistKey(name + u" more")));
    }
}

TEST(PlistValue, distinguishesKindsOfNumbers) {
  EXPECT_FALSE(PlistValue(1) == PlistValue(1.0));
  EXPECT_FALSE(PlistValue(1) == PlistValue(true));
  EXPECT_FALSE(PlistValue(0) == PlistValue(false));
  EXPECT_FALSE(PlistValue(1.0) == PlistValue(PlistDate{1.0}));
  EXPECT_FALSE(PlistValue(u"a") == PlistValue(bytes("a")));
}

TEST(PlistValue, distinguishesMinusZeroFromZero) {
  EXPECT_FALSE(PlistValue(-0.0) == PlistValue(0.0));
  EXPECT_FALSE(PlistValue(PlistDate{-0.0}) == PlistValue(PlistDate{0.0}));
  EXPECT_EQ(PlistValue(-0.0), PlistValue(-0.0));
}

TEST(PlistValue, comparesNaNByItsBits) {
  EXPECT_EQ(PlistValue(nan), PlistValue(nan));
  EXPECT_EQ(PlistValue(PlistDate{nan}), PlistValue(PlistDate{nan}));
  EXPECT_FALSE(PlistValue(nan) == PlistValue(-nan)) << "the signs differ";
}

TEST(PlistInteger, printsTheLimitsOfItsRange) {
  EXPECT_EQ(PlistInteger(smallest).decimal(), "-9223372036854775808");
  EXPECT_EQ(PlistInteger(-1).decimal(), "-1");
  EXPECT_EQ(PlistInteger(0).decimal(), "0");
  EXPECT_EQ(PlistInteger(largestSigned).decimal(), "9223372036854775807");
  EXPECT_EQ(PlistInteger(largest).decimal(), "18446744073709551615");
}

TEST(PlistInteger, distinguishesNegativeFromPositiveBits) {
  EXPECT_FALSE(PlistInteger(-1) == PlistInteger(largest));
  EXPECT_FALSE(PlistInteger(smallest) == PlistInteger(std::uint64_t{1} << 63));
  EXPECT_EQ(PlistInteger(std::int8_t{5}), PlistInteger(std::uint64_t{5}));
}

TEST(PlistInteger, hasASignedValueIfItFits) {
  EXPECT_EQ(PlistInteger(smallest).signedValue(), smallest);
  EXPECT_EQ(PlistInteger(largestSigned).signedValue(), largestSigned);
  EXPECT_FALSE(PlistInteger(largest).signedValue());
  EXPECT_FALSE(PlistInteger(std::uint64_t{1} << 63).signedValue());
}

TEST(PlistValue, comparesStringsByUnitsAcrossEncodings) {
  for (const char16_t* sample : {u"plain", u"\u00E9t\u00E9", u"\u0416", u"\U0001F600"}) {
    const PlistValue value = PlistValue::array({sample});
    const PlistValue xml = inDocument(value, PropertyListFormat::xml);        // UTF-8
    const PlistValue binary = inDocument(value, PropertyListFormat::binary);  // ASCII or UTF-16
    EXPECT_EQ(xml, value);
    EXPECT_EQ(xml, binary);
    EXPECT_FALSE(xml == PlistValue::array({u"other"}));
  }
}

TEST(PlistValue, keepsUnpairedSurrogates) {
  const std::u16string high(1, u'\xD83D');
  const std::u16string low(1, u'\xDE00');
  EXPECT_EQ(PlistValue(high).string()->utf16(), high);
  EXPECT_FALSE(PlistValue(high) == PlistValue(low));
  EXPECT_FALSE(PlistValue(high) == PlistValue(u"\uFFFD"));
  EXPECT_EQ(inDocument(PlistValue(high), PropertyListFormat::binary), PlistValue(high));
}

PlistValue nested(unsigned levels) {
  PlistValue value = u"innermost";
  for (unsigned level = 0; level < levels; ++level)
    value = level % 2 == 0 ? PlistValue::array({value}) : PlistValue::dictionary({{u"k", value}});
  return value;
}

TEST(PlistValue, countsLevels) {
  EXPECT_EQ(PlistValue(1).depth(), 0U);
  EXPECT_EQ(PlistValue::array({}).depth(), 1U);
  EXPECT_EQ(PlistValue::array({PlistValue::array({}), 1}).depth(), 2U);
  EXPECT_EQ(nested(512).depth(), 512U);
}

TEST(PlistValue, refusesMoreThan512Levels) {
  const PlistValue deepest = nested(plistMaximumDepth);
  EXPECT_EQ(deepest, nested(plistMaximumDepth));
  EXPECT_THROW(PlistValue::array({deepest}), std::length_error);
  EXPECT_THROW(PlistValue::dictionary({{u"k", deepest}}), std::length_error);
  EXPECT_THROW(PlistValue::array({1}).rearranged({deepest}), std::length_error);
  EXPECT_THROW(PlistValue::dictionary({{u"k", 1}}).replacing(0, deepest), std::length_error);
}

TEST(PlistValue, replacingAndRearrangingReturnCopies) {
  const PlistValue array = PlistValue::array({1, 2});
  const PlistValue dictionary = PlistValue::dictionary({{u"a", 1}, {u"b", 2}});
  EXPECT_EQ(array.rearranged({2, 1}), PlistValue::array({2, 1}));
  EXPECT_EQ(dictionary.replacing(1, 3), PlistValue::dictionary({{u"a", 1}, {u"b", 3}}));
  EXPECT_EQ(array, PlistValue::array({1, 2}));
  EXPECT_EQ(dictionary, PlistValue::dictionary({{u"a", 1}, {u"b", 2}}));
}

TEST(PlistValue, replacingTwiceKeepsBothChanges) {
  const PlistValue built =
      PlistValue::dictionary({{u"a", PlistValue::array({PlistValue::array({})})}, {u"b", 2}, {u"c", 3}});
  for (const PlistValue& each :
       {built, inDocument(built, PropertyListFormat::binary), inDocument(built, PropertyListFormat::xml)}) {
    const PlistValue once = each.replacing(each.indexOf(u"b").value(), u"new b");
    const PlistValue twice = once.replacing(once.indexOf(u"a").value(), u"new a");
    EXPECT_EQ(once, PlistValue::dictionary({{u"a", built.valueAt(0)}, {u"b", u"new b"}, {u"c", 3}}));
    EXPECT_EQ(twice, PlistValue::dictionary({{u"a", u"new a"}, {u"b", u"new b"}, {u"c", 3}}));
    EXPECT_EQ(once.depth(), 3U);
    EXPECT_EQ(twice.depth(), 1U);
    EXPECT_EQ(twice.value(u"c"), PlistValue(3));
    EXPECT_EQ(each, built);
    ASSERT_EQ(twice.origin() != nullptr, each.place() != nullptr);
    EXPECT_TRUE(twice.origin() == nullptr || twice.origin()->document == each.place()->document);
  }
}

TEST(PlistValue, hasNoOriginOutsideADocument) {
  const PlistValue built = PlistValue::array({1, 2});
  EXPECT_EQ(built.origin(), nullptr);
  EXPECT_EQ(built.rearranged({2, 1}).origin(), nullptr);
}

TEST(PlistValue, keepsItsDocumentAlive) {
  std::optional<PlistValue> title;
  {
    const PlistValue whole = inDocument(PlistValue::dictionary({{u"Title", u"kept"}}), PropertyListFormat::xml);
    title = whole.value(u"Title");
  }
  EXPECT_EQ(title->string()->utf16(), u"kept");
}

// Sharing

TEST(Sharing, sortedSharesSubtreesInOrder) {
  const VirtualMachine machine;
  const PlistValue inOrder = folderNode(u"in order", {leafNode(u"a"), leafNode(u"b")});
  const PlistValue inDisorder = folderNode(u"in disorder", {leafNode(u"b"), leafNode(u"a")});
  const PlistValue built = rootNode({inOrder, inDisorder});
  for (const PlistValue& root :
       {built, inDocument(built, PropertyListFormat::binary), inDocument(built, PropertyListFormat::xml)}) {
    const PlistValue result = sorted(root, true);
    const PlistValue before = *root.value(u"Children");
    const PlistValue after = *result.value(u"Children");
    EXPECT_EQ(after.at(0).identity(), before.at(0).identity());
    EXPECT_NE(after.at(1).identity(), before.at(1).identity());
    const PlistValue first = before.at(1).value(u"Children")->at(0);
    EXPECT_EQ(after.at(1).value(u"Children")->at(1).identity(), first.identity()) << "moved, not copied";
  }
}

TEST(Sharing, sortedReturnsATreeInOrderItself) {
  const VirtualMachine machine;
  const PlistValue root = rootNode({folderNode(u"z", {folderNode(u"b", {}), leafNode(u"a")}), leafNode(u"a")});
  EXPECT_EQ(sorted(root, true).identity(), root.identity());
  const PlistValue stored = inDocument(root, PropertyListFormat::binary);
  EXPECT_EQ(sorted(stored, true).identity(), stored.identity());
}

// Each level has the level below twice: 2^levels scalars if it were expanded.
PlistValue doubledArrays(unsigned levels, const PlistValue& innermost) {
  PlistValue value = innermost;
  for (unsigned level = 0; level < levels; ++level) value = PlistValue::array({value, value});
  return value;
}

PlistValue doubledFolders(unsigned levels, const std::vector<PlistValue>& innermost) {
  PlistValue value = folderNode(u"innermost", innermost);
  for (unsigned level = 0; level < levels; ++level) value = folderNode(u"folder", {leafNode(u"leaf"), value, value});
  return value;
}

TEST(Sharing, comparesATreeOf2ToThe400ValuesInLinearTime) {
  const PlistValue tree = doubledArrays(400, u"a");
  const PlistValue same = doubledArrays(400, u"a");
  EXPECT_NE(tree.identity(), same.identity());
  EXPECT_EQ(tree, same);
  EXPECT_FALSE(tree == doubledArrays(400, u"b"));
  EXPECT_FALSE(tree == doubledArrays(399, u"a"));
  // Shared in one value only, with few levels, because the other value is expanded.
  EXPECT_EQ(doubledArrays(10, u"a"), deepCopy(doubledArrays(10, u"a")));
}

TEST(Sharing, comparesEveryPlaceOfSharedValues) {
  const PlistValue left = PlistValue::array({1});
  const PlistValue right = PlistValue::array({2});
  EXPECT_FALSE(PlistValue::array({left, left}) == PlistValue::array({left, right}));
  EXPECT_FALSE(PlistValue::array({left, right}) == PlistValue::array({right, left}));
  EXPECT_FALSE(PlistValue::array({left, right, left}) == PlistValue::array({left, right, right}));
  const PlistValue leftAgain = PlistValue::array({1});
  EXPECT_EQ(PlistValue::array({left, leftAgain, left}), PlistValue::array({leftAgain, left, left}));
}

TEST(Sharing, sortsATreeOf2ToThe250ValuesInLinearTime) {
  const VirtualMachine machine;
  const PlistValue tree = doubledFolders(250, {leafNode(u"b"), leafNode(u"a")});
  const PlistValue result = sorted(tree, true);
  EXPECT_FALSE(result == tree);
  EXPECT_EQ(sorted(result, true), result);
  // On each level the folders come first, and both are the same storage, so each was sorted once.
  PlistValue level = *result.value(u"Children");
  EXPECT_EQ(level.at(1).identity(), level.at(2).identity()) << "the root's children keep their places";
  level = *level.at(1).value(u"Children");
  for (unsigned depth = 1; depth < 250; ++depth) {
    ASSERT_EQ(level.at(0).identity(), level.at(1).identity()) << depth;
    ASSERT_EQ(level.at(2), leafNode(u"leaf")) << depth;
    level = *level.at(0).value(u"Children");
  }
  EXPECT_EQ(level.at(0), leafNode(u"a"));
}

}  // namespace
