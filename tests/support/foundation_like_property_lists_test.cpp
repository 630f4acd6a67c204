// The double that promises no more than Foundation.
#include "tests/support/foundation_like_property_lists.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <string>

#include "platform/error.h"
#include "tests/support/binary_file.h"
#include "tests/support/environment_scope.h"
#include "tests/support/native_parts.h"

namespace {

PlistValue sample() {
  return PlistValue::dictionary({{u"b", PlistValue::array({1, 2})}, {u"c", PlistValue::dictionary({})}, {u"a", u"x"}});
}

std::string xmlOf(PropertyLists& lists, const PlistValue& value) {
  return std::string(lists.serialize(value, PropertyListFormat::xml).text());
}

class FoundationLike : public testing::Test {
 protected:
  PlistValue stored(PropertyListFormat format) { return lists_.parse(lists_.serialize(sample(), format)).value; }

  FoundationLikePropertyLists lists_{std::make_unique<SystemPropertyLists>()};
};

TEST_F(FoundationLike, returnsKeysInAnotherOrderThanTheFile) {
  const PlistValue value = stored(PropertyListFormat::xml);
  EXPECT_EQ(value, sample());
  EXPECT_EQ(value.keyAt(0).utf16(), u"c");
  EXPECT_EQ(value.keyAt(1).utf16(), u"b");
  EXPECT_EQ(value.keyAt(2).utf16(), u"a");
}

TEST_F(FoundationLike, returnsValuesWithoutAPlace) {
  for (const PropertyListFormat format : {PropertyListFormat::binary, PropertyListFormat::xml}) {
    const PlistValue value = stored(format);
    EXPECT_EQ(value.placeOrOrigin(), nullptr);
    EXPECT_EQ(value.value(u"b")->placeOrOrigin(), nullptr);
    EXPECT_EQ(value.replacing(0, 1).origin(), nullptr);
  }
}

TEST_F(FoundationLike, writesXmlAnewWithAscendingKeys) {
  const std::string xml = xmlOf(lists_, sample());
  EXPECT_LT(xml.find("<key>a"), xml.find("<key>b"));
  EXPECT_LT(xml.find("<key>b"), xml.find("<key>c"));
  const PlistValue read = lists_.parse(Bytes("<!-- a comment -->" + xml)).value;
  EXPECT_EQ(xmlOf(lists_, read), xml) << "the comment is lost";
}

TEST_F(FoundationLike, namesNoPlaceInAnError) {
  try {
    lists_.parse(Bytes(std::string("bplist00")));
    ADD_FAILURE();
  } catch (const Error& error) {
    EXPECT_EQ(error.description(), "The data couldn’t be read because it isn’t in the correct format.");
  }
}

TEST_F(FoundationLike, keepsSharing) {
  BinaryFile file;
  std::uint32_t top = file.string("innermost");
  for (int level = 0; level <= 100; ++level) top = file.array({top, top});
  const PlistValue copy = lists_.parse(file.bytes(top)).value;
  EXPECT_EQ(copy.depth(), 101U);
  EXPECT_EQ(copy.at(0).identity(), copy.at(1).identity());
}

TEST_F(FoundationLike, isChosenByTheEnvironment) {
  const Bytes xml(xmlOf(lists_, sample()));
  const EnvironmentScope chosen("QUILLERY_FOUNDATION_LIKE", "1");
  EXPECT_EQ(NativePropertyLists().parse(xml).value.keyAt(0).utf16(), u"c");
  EXPECT_EQ(NativePropertyLists().parse(xml).value.place(), nullptr);
}

}  // namespace
