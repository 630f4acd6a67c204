// Values in a document of our own reader: they keep the order of keys, and know their places.
#include <gtest/gtest.h>

#include <string>

#include "platform/linux/plist/property_list_codec.h"

namespace {

PlistValue inDocument(const PlistValue& value, PropertyListFormat format) {
  PropertyListCodec codec;
  return codec.parse(codec.serialize(value, format)).value;
}

TEST(DocumentValue, keepsTheOrderOfKeys) {
  const PlistValue value = PlistValue::dictionary({{u"b", 1}, {u"a", 2}, {u"c", 3}});
  for (const PropertyListFormat format : {PropertyListFormat::binary, PropertyListFormat::xml}) {
    const PlistValue stored = inDocument(value, format);
    EXPECT_EQ(stored.keyAt(0).utf16(), u"b");
    EXPECT_EQ(stored.keyAt(1).utf16(), u"a");
    EXPECT_EQ(stored.keyAt(2).utf16(), u"c");
    EXPECT_EQ(stored.valueAt(2), PlistValue(3));
    EXPECT_EQ(stored.indexOf(u"c"), 2U);
  }
}

TEST(DocumentValue, remembersItsOriginWhenRearranged) {
  for (const PropertyListFormat format : {PropertyListFormat::binary, PropertyListFormat::xml}) {
    const PlistValue stored = inDocument(PlistValue::array({u"a", u"b"}), format);
    const PlistValue once = stored.rearranged({stored.at(1), stored.at(0)});
    ASSERT_NE(once.origin(), nullptr);
    EXPECT_EQ(once.origin()->record, stored.place()->record);
    const PlistValue twice = once.rearranged({once.at(1), once.at(0)});
    ASSERT_NE(twice.origin(), nullptr);
    EXPECT_EQ(twice.origin()->document, stored.place()->document);
  }
}

TEST(DocumentValue, remembersItsOriginWhenReplaced) {
  const PlistValue stored = inDocument(PlistValue::dictionary({{u"a", 1}, {u"b", 2}}), PropertyListFormat::xml);
  const PlistValue twice = stored.replacing(1, u"new b").replacing(0, u"new a");
  ASSERT_NE(twice.origin(), nullptr);
  EXPECT_EQ(twice.origin()->document, stored.place()->document);
}

}  // namespace
