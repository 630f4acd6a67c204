// Reading and writing property lists: what every implementation promises.
#include "platform/property_lists.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <memory>
#include <string>
#include <vector>

#include "platform/error.h"
#include "tests/interfaces/differences.h"
#include "tests/interfaces/implementations.h"
#include "tests/support/plist_json.h"

namespace {

class PropertyListsTest : public InterfaceTest<Implementation<PropertyLists>> {
 protected:
  PropertyLists::Parsed parsed(const std::string& text) { return lists_->parse(Bytes(std::string(text))); }

  const std::unique_ptr<PropertyLists> lists_ = GetParam().make();
};

INSTANTIATE_TEST_SUITE_P(Implementations, PropertyListsTest, testing::ValuesIn(propertyLists()), implementationName);

// A value of every kind, with whole seconds, because XML has no others.
PlistValue everything() {
  return PlistValue::dictionary({{u"string", u"\u00E9 & <b> \U0001F4D6"},
                                 {u"", u""},
                                 {u"smallest", std::numeric_limits<std::int64_t>::min()},
                                 {u"largest", std::numeric_limits<std::uint64_t>::max()},
                                 {u"real", 0.1},
                                 {u"true", true},
                                 {u"false", false},
                                 {u"date", PlistDate{700000000}},
                                 {u"data", Bytes(std::string("\0\1\xFF", 3))},
                                 {u"array", PlistValue::array({1, u"two", PlistValue::array({})})},
                                 {u"dictionary", PlistValue::dictionary({{u"inner", 2.5}})}});
}

TEST_P(PropertyListsTest, returnsWhatItWroteInBothFormats) {
  for (const PropertyListFormat format : {PropertyListFormat::binary, PropertyListFormat::xml}) {
    const PropertyLists::Parsed read = lists_->parse(lists_->serialize(everything(), format));
    EXPECT_EQ(read.value, everything()) << toJson(read.value);
    EXPECT_EQ(read.format, format);
  }
}

TEST_P(PropertyListsTest, knowsWhatBytesParseTo) {
  for (const PropertyListFormat format : {PropertyListFormat::binary, PropertyListFormat::xml}) {
    const Bytes written = lists_->serialize(everything(), format);
    EXPECT_TRUE(lists_->parsesTo(everything(), written));
    EXPECT_TRUE(lists_->parsesTo(lists_->parse(written).value, written));
    EXPECT_FALSE(lists_->parsesTo(PlistValue::array({everything()}), written));
    EXPECT_FALSE(lists_->parsesTo(everything().replacing(everything().indexOf(u"real").value(), 0.2), written));
  }
  EXPECT_THROW(lists_->parsesTo(everything(), Bytes(std::string("bplist00"))), Error);
}

TEST_P(PropertyListsTest, changesFormats) {
  const PlistValue read = lists_->parse(lists_->serialize(everything(), PropertyListFormat::xml)).value;
  EXPECT_EQ(lists_->parse(lists_->serialize(read, PropertyListFormat::binary)).value, everything());
}

TEST_P(PropertyListsTest, writesAnArrayInItsNewOrder) {
  for (const PropertyListFormat format : {PropertyListFormat::binary, PropertyListFormat::xml}) {
    const PlistValue stored = lists_->parse(lists_->serialize(PlistValue::array({1, u"two", 3}), format)).value;
    const PlistValue turned = stored.rearranged({stored.at(2), stored.at(0), stored.at(1)});
    EXPECT_EQ(lists_->parse(lists_->serialize(turned, format)).value, PlistValue::array({3, 1, u"two"}));
  }
}

TEST_P(PropertyListsTest, writesAReplacedEntry) {
  for (const PropertyListFormat format : {PropertyListFormat::binary, PropertyListFormat::xml}) {
    const PlistValue stored = lists_->parse(lists_->serialize(everything(), format)).value;
    const PlistValue changed = stored.replacing(stored.indexOf(u"real").value(), u"text");
    const PlistValue read = lists_->parse(lists_->serialize(changed, format)).value;
    EXPECT_EQ(read.value(u"real"), PlistValue(u"text"));
    EXPECT_EQ(read.value(u"string"), everything().value(u"string"));
    EXPECT_EQ(read.size(), everything().size());
  }
}

TEST_P(PropertyListsTest, readsOldStyleTextButCannotWriteIt) {
  const PropertyLists::Parsed read = parsed("{ a = (b, \"c d\"); }");
  EXPECT_EQ(read.format, PropertyListFormat::oldStyle);
  EXPECT_EQ(read.value, PlistValue::dictionary({{u"a", PlistValue::array({u"b", u"c d"})}}));
  EXPECT_THROW(lists_->serialize(read.value, read.format), Error);
}

TEST_P(PropertyListsTest, readsWhatOutlivesTheBytes) {
  auto bytes = std::make_unique<Bytes>(lists_->serialize(everything(), PropertyListFormat::binary));
  const PlistValue read = lists_->parse(*bytes).value;
  bytes.reset();
  EXPECT_EQ(read, everything());
}

TEST_P(PropertyListsTest, explainsWhyBytesAreMalformed) {
  for (const char* malformed : {"bplist00", "<?xml version=\"1.0\"?><plist><dict><key>a</key></plist>", "{ a = "}) {
    try {
      parsed(malformed);
      ADD_FAILURE() << malformed;
    } catch (const Error& error) {
      EXPECT_FALSE(error.description().empty()) << malformed;
    }
  }
}

}  // namespace
