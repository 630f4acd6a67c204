// The old-style ASCII format, which the program reads but does not write.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "platform/error.h"
#include "platform/linux/plist/property_list_codec.h"
#include "tests/support/plist_json.h"

namespace {

using testing::HasSubstr;

PlistValue read(const std::string& text) {
  const PropertyLists::Parsed parsed = PropertyListCodec().parse(Bytes(text));
  EXPECT_EQ(parsed.format, PropertyListFormat::oldStyle);
  return parsed.value;
}

std::string problemOf(const std::string& text) {
  try {
    read(text);
  } catch (const Error& error) {
    EXPECT_EQ(error.code(), 3840);
    return error.description();
  }
  return "no error";
}

TEST(OldStyleReader, readsABookmarkFile) {
  EXPECT_EQ(read("{ Children = ( { Title = \"b c\"; WebBookmarkType = WebBookmarkTypeList; }, ); }"),
            PlistValue::dictionary(
                {{u"Children", PlistValue::array({PlistValue::dictionary(
                                   {{u"Title", u"b c"}, {u"WebBookmarkType", u"WebBookmarkTypeList"}})})}}));
}

TEST(OldStyleReader, readsAStringsFile) {
  EXPECT_EQ(read("/* greeting */ hello = \"world\"; // and\nagain;\n"),
            PlistValue::dictionary({{u"hello", u"world"}, {u"again", u"again"}}));
}

TEST(OldStyleReader, readsTextBetweenTwoBlockComments) {
  EXPECT_EQ(read("/* one */ { a = /* two */ b; /* three */ c = d; } /* four */"),
            PlistValue::dictionary({{u"a", u"b"}, {u"c", u"d"}}));
  EXPECT_EQ(read("(a /* * / */, b /***/)"), PlistValue::array({u"a", u"b"}));
  EXPECT_THAT(problemOf("( a /* b )"), HasSubstr("an array with a missing comma or closing parenthesis on line 1"));
}

TEST(OldStyleReader, readsABlankFileAsAnEmptyDictionary) {
  EXPECT_EQ(read(" \n\t// nothing\n/* at all */ "), PlistValue::dictionary({}));
}

TEST(OldStyleReader, decodesEscapes) {
  EXPECT_EQ(read("\"\\341\\U00e9\\n\\q\\\xC3\xA9\""), PlistValue(u"\u00C6\u00E9\nqé"));
  EXPECT_EQ(read("\"\\Ud83d\""), PlistValue(std::u16string(1, char16_t{0xD83D})));
}

TEST(OldStyleReader, keepsTheLastOfEqualKeys) {
  EXPECT_EQ(read("{ a = 1; b = 2; a = 3; }"), PlistValue::dictionary({{u"a", u"3"}, {u"b", u"2"}}));
}

TEST(OldStyleReader, namesTheLine) {
  EXPECT_THAT(problemOf("{\n a = b\n}\n"), HasSubstr("on line 3"));
  EXPECT_THAT(problemOf("(\r\n a,\r\n %)"), HasSubstr("on line 3"));
  EXPECT_THAT(problemOf("(\n\"a"), HasSubstr("an unterminated quoted string on line 2"));
  EXPECT_THAT(problemOf("{ a = b; } c"), HasSubstr("unexpected text after the end"));
  EXPECT_THAT(problemOf("a\xFF"), HasSubstr("invalid UTF-8 on line 1"));
  EXPECT_THAT(problemOf("{ a = b;\n \xC3\xA9 = \"\xC3\"; }"), HasSubstr("invalid UTF-8 on line 2"));
}

TEST(OldStyleReader, refusesEveryTruncation) {
  const std::string text = "{ a = ( b, \"c\\n\", <0fbd> ); 'd' = { e = f; }; }";
  ASSERT_NO_THROW(read(text));
  for (std::size_t size = 1; size < text.size(); ++size)
    EXPECT_NE(problemOf(text.substr(0, size)), "no error") << text.substr(0, size);
}

TEST(OldStyleReader, reads512LevelsAndRefusesMore) {
  const auto nested = [](std::size_t levels) { return std::string(levels, '(') + "a" + std::string(levels, ')'); };
  EXPECT_EQ(nestedArrays(read(nested(512))), 512U);
  EXPECT_THAT(problemOf(nested(513)), HasSubstr("more than 512 levels"));
  EXPECT_THAT(problemOf(nested(1'000'000)), HasSubstr("more than 512 levels"));
}

TEST(OldStyleReader, reads512LevelsOfDictionariesAndRefusesMore) {
  const auto nested = [](std::size_t levels) {
    std::string text;
    for (std::size_t level = 0; level < levels; ++level) text += "{a=";
    text += "b";
    for (std::size_t level = 0; level < levels; ++level) text += ";}";
    return text;
  };
  EXPECT_EQ(read(nested(512)).depth(), 512U);
  EXPECT_THAT(problemOf(nested(513)), HasSubstr("more than 512 levels"));
  EXPECT_THAT(problemOf(nested(200'000)), HasSubstr("more than 512 levels"));
}

TEST(OldStyleReader, refusesDeepContainersThatAreNotClosed) {
  for (const std::string opening : {"(", "{a=", "({a="}) {
    std::string text;
    for (int level = 0; level < 200'000; ++level) text += opening;
    EXPECT_THAT(problemOf(text), HasSubstr("more than 512 levels")) << opening;
    EXPECT_THAT(problemOf("a=" + text), HasSubstr("more than 512 levels")) << opening;
  }
}

TEST(OldStyleReader, readsUtf16WithAByteOrderMark) {
  EXPECT_EQ(read(std::string("\xFE\xFF\0\"\0\xE9\0\"", 8)), PlistValue(u"é"));
}

TEST(OldStyleFormat, isNotWritten) {
  try {
    PropertyListCodec().serialize(PlistValue(u"a"), PropertyListFormat::oldStyle);
    FAIL();
  } catch (const Error& error) {
    EXPECT_THAT(error.description(), HasSubstr("the old-style format can be read but not written"));
  }
}

}  // namespace
