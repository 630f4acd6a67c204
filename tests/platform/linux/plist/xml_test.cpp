// The XML dialect: reading, errors with their lines, writing and rewriting.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include "engine/sort_order.h"
#include "platform/error.h"
#include "platform/linux/plist/property_list_codec.h"
#include "tests/support/plist_json.h"
#include "tests/support/virtual_machine.h"

namespace {

using testing::HasSubstr;

const std::string head =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
    "<!DOCTYPE plist PUBLIC \"-//Apple//DTD PLIST 1.0//EN\" \"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">\n"
    "<plist version=\"1.0\">\n";

PlistValue read(const std::string& text) {
  const PropertyLists::Parsed parsed = PropertyListCodec().parse(Bytes(text));
  EXPECT_EQ(parsed.format, PropertyListFormat::xml);
  return parsed.value;
}

std::string write(const PlistValue& value) {
  return std::string(PropertyListCodec().serialize(value, PropertyListFormat::xml).text());
}

std::string problemOf(const std::string& text) {
  try {
    PropertyListCodec().parse(Bytes(text));
  } catch (const Error& error) {
    EXPECT_EQ(error.domain(), "PropertyList");
    EXPECT_EQ(error.code(), 3840);
    return error.description();
  }
  return "no error";
}

TEST(XmlReader, namesTheLine) {
  EXPECT_THAT(problemOf(head + "<array>\n<true/>\n<what/>\n</array>\n</plist>"),
              HasSubstr("unknown element <what> on line 6"));
  EXPECT_THAT(problemOf("<array>\r<true/>\r\n<integer>x</integer></array>"), HasSubstr("on line 3"));
  EXPECT_THAT(problemOf("<array>\n\n<string>a\xFF</string></array>"), HasSubstr("invalid UTF-8 on line 3"));
}

TEST(XmlReader, refusesEveryTruncation) {
  const std::string text =
      "<plist><dict><key>a</key><array><integer>1</integer><string>b&amp;c</string><data>AAAA</data>"
      "<date>2024-01-02T03:04:05Z</date><real>1.5</real><true/><!-- c --></array></dict></plist>";
  ASSERT_NO_THROW(read(text));
  for (std::size_t size = 1; size < text.size(); ++size)
    EXPECT_NE(problemOf(text.substr(0, size)), "no error") << text.substr(0, size);
}

TEST(XmlReader, reads512LevelsAndRefusesMore) {
  const auto nested = [](std::size_t levels) {
    std::string text;
    for (std::size_t level = 0; level < levels; ++level) text += "<array>";
    text += "<true/>";
    for (std::size_t level = 0; level < levels; ++level) text += "</array>";
    return text;
  };
  EXPECT_EQ(nestedArrays(read(nested(512))), 512U);
  EXPECT_THAT(problemOf(nested(513)), HasSubstr("more than 512 levels"));
  EXPECT_THAT(problemOf(nested(1'000'000)), HasSubstr("more than 512 levels"));
  std::string plists;
  for (int level = 0; level < 1'000'000; ++level) plists += "<plist>";
  EXPECT_THAT(problemOf(plists), HasSubstr("more than 512 levels"));
}

TEST(XmlReader, keepsControlCharactersAndCarriageReturns) {
  const std::u16string title(u"a\r\nb\rc\u0001\u0000d", 9);
  const PlistValue value = PlistValue::array({title});
  EXPECT_EQ(read(write(value)), value);
  EXPECT_THAT(write(value), HasSubstr("a\r\nb\rc\x01"));
}

TEST(XmlReader, decodesEntitiesAndCharacterReferences) {
  EXPECT_EQ(read("<string>&lt;&gt;&amp;&apos;&quot;&#65;&#x42;&#x1F600;&#0;</string>"),
            PlistValue(std::u16string(u"<>&'\"AB\U0001F600\0", 10)));
  EXPECT_THAT(problemOf("<string>&nbsp;</string>"), HasSubstr("unknown entity"));
  EXPECT_THAT(problemOf("<string>&#xDFFF;</string>"), HasSubstr("an invalid Unicode character"));
  EXPECT_THAT(problemOf("<string>&#x110000;</string>"), HasSubstr("an invalid Unicode character"));
  EXPECT_THAT(problemOf("<string>&#123456789;</string>"), HasSubstr("malformed character reference"));
}

TEST(XmlReader, keepsTheLastOfEqualKeysAmongMany) {
  EXPECT_EQ(read("<dict><key>a</key><true/><key>b</key><true/><key>a</key><false/></dict>"),
            PlistValue::dictionary({{u"a", false}, {u"b", true}}));
  std::string text = "<dict>";
  for (int key = 0; key < 100; ++key)
    text += "<key>" + std::to_string(key % 50) + "</key><integer>" + std::to_string(key) + "</integer>";
  const PlistValue value = read(text + "</dict>");
  ASSERT_EQ(value.size(), 50U);
  for (std::size_t index = 0; index < 50; ++index) EXPECT_EQ(value.valueAt(index), PlistValue(index + 50));
}

// The elements of a dictionary: keys "key 0" to "key 29" with arrays as values, then "key 7" again with the value
// `duplicate`, then "last".
std::string entriesWithADuplicate(const std::string& duplicate) {
  std::string text;
  for (int key = 0; key < 30; ++key) {
    const std::string number = std::to_string(key);
    text.append("<key>key ")
        .append(number)
        .append("</key><array><integer>")
        .append(number)
        .append("</integer></array>");
  }
  return text + "<key>key 7</key>" + duplicate + "<key>last</key><dict><key>a</key><true/></dict>";
}

PlistValue dictionaryWithADuplicate(const PlistValue& duplicate) {
  std::vector<PlistEntry> entries;
  entries.reserve(31);
  for (int key = 0; key < 30; ++key)
    entries.push_back({utf16("key " + std::to_string(key)), key == 7 ? duplicate : PlistValue::array({key})});
  entries.push_back({u"last", PlistValue::dictionary({{u"a", true}})});
  return PlistValue::dictionary(std::move(entries));
}

TEST(XmlReader, keepsContainersAroundADuplicateKey) {
  const std::string text = "<array><string>before</string><dict>" +
                           entriesWithADuplicate("<array><array><integer>7</integer></array></array>") +
                           "</dict><string>after</string></array>";
  const PlistValue duplicate = PlistValue::array({PlistValue::array({7})});
  const PlistValue expected = PlistValue::array({u"before", dictionaryWithADuplicate(duplicate), u"after"});
  const PlistValue value = read(text);
  EXPECT_EQ(value, expected);
  EXPECT_EQ(value.depth(), expected.depth());
  EXPECT_EQ(value.at(1).keyAt(30).utf16(), u"last");
}

TEST(XmlReader, countsNoLevelsOfAReplacedValue) {
  for (const bool many : {false, true}) {
    const std::string more = many ? entriesWithADuplicate("<true/>") : "";
    const PlistValue value = read("<array><dict><key>key 7</key><array><array><array><array/></array></array></array>" +
                                  more + "<key>key 7</key><false/></dict></array>");
    EXPECT_EQ(value.at(0).value(u"key 7"), PlistValue(false));
    EXPECT_EQ(value.depth(), many ? 3U : 2U);
    EXPECT_EQ(value, deepCopy(value));
  }
}

TEST(XmlReader, acceptsManySiblings) {
  std::string text = "<array>";
  for (int element = 0; element < 600; ++element)
    text += "<array><dict/></array><dict><key>k</key><array/></dict><plist><true/></plist>";
  const PlistValue value = read(text + "</array>");
  EXPECT_EQ(value.size(), 1800U);
  EXPECT_EQ(value.depth(), 3U);
}

TEST(XmlReader, skipsWhiteSpaceBeforeIntegers) {
  // White space of ASCII, control characters, an en space and an ideographic space.
  for (const std::string space : {" ", "\t", "\n", "\r\n\t ", "\v", "\x01", "\x7F", "\xE2\x80\x82", "\xE3\x80\x80"}) {
    EXPECT_EQ(read("<integer>" + space + "5</integer>"), PlistValue(5)) << testing::PrintToString(space);
    EXPECT_EQ(read("<integer>-" + space + "5</integer>"), PlistValue(-5)) << testing::PrintToString(space);
    EXPECT_EQ(read("<integer>" + space + "+" + std::string(space).append("0x1F</integer>")), PlistValue(31));
    EXPECT_THAT(problemOf("<integer>" + space + "</integer>"), HasSubstr("an empty <integer> on line"));
    EXPECT_THAT(problemOf("<integer>5" + space + "</integer>"), HasSubstr("an unexpected byte 0x"));
  }
  EXPECT_THAT(problemOf("<integer>5 6</integer>"), HasSubstr("an unexpected byte 0x20 in an <integer> on line 1"));
  EXPECT_THAT(problemOf("<integer>\xE2\x82\xAC"
                        "5</integer>"),
              HasSubstr("an unexpected byte 0xE2"));
}

TEST(XmlReader, readsCommentsBeforeTheRoot) {
  EXPECT_EQ(read("<!-- <true/> --><string>a</string>"), PlistValue(u"a"));
  EXPECT_EQ(read(" <!-- one -->\n<!-- > -- two --><?more?><!DOCTYPE plist><!--three--><string>a</string>"),
            PlistValue(u"a"));
  EXPECT_THAT(problemOf("\n<!-- <string>a</string>"), HasSubstr("an unterminated comment on line 2"));
  EXPECT_THAT(problemOf("<!-- a --> -->"), HasSubstr("an unexpected character ‘-’ on line 1"));
}

TEST(XmlReader, ignoresAnEncodingNameWithoutItsClosingQuote) {
  EXPECT_EQ(read("<?xml version='1.0' encoding='iso-8859-1?><string>a</string>"), PlistValue(u"a"));
  EXPECT_EQ(read("<?xml version='1.0' encoding=\"martian'?><string>a</string>"), PlistValue(u"a"));
  EXPECT_EQ(read("<?xml version='1.0' encoding='?><string>a</string>"), PlistValue(u"a"));
  EXPECT_EQ(read("<?xml version='1.0' encoding=?><string>a</string>"), PlistValue(u"a"));
  EXPECT_THAT(problemOf("<?xml version='1.0' encoding='iso-8859-1?><string>\xE9</string>"),
              HasSubstr("invalid UTF-8 on line 1"));
}

TEST(XmlReader, refusesInternalSubsetsAndASecondValue) {
  EXPECT_THAT(problemOf("<!DOCTYPE plist [ <!ENTITY a \"b\"> ]><plist><true/></plist>"), HasSubstr("internal subset"));
  EXPECT_THAT(problemOf("<plist><true/><true/></plist>"), HasSubstr("a second value in <plist>"));
}

TEST(XmlReader, readsTheNamedEncoding) {
  EXPECT_EQ(read("\xEF\xBB\xBF<string>\xC3\xA9</string>"), PlistValue(u"é"));
  EXPECT_EQ(read("<?xml version='1.0' encoding='iso-8859-1'?><string>\xE9</string>"), PlistValue(u"é"));
  EXPECT_EQ(read("<?xml version='1.0' encoding='utf-8'?><string>\xC3\xA9</string>"), PlistValue(u"é"));
  EXPECT_EQ(read("<?xml version='1.0' encoding='Shift_JIS'?><string>\x93\xFA</string>"), PlistValue(u"日"));
  EXPECT_THAT(problemOf("<?xml version='1.0' encoding='martian'?><string>a</string>"),
              HasSubstr("unknown encoding “martian”"));
  EXPECT_THAT(problemOf("<?xml version='1.0' encoding='us-ascii'?><string>\xE9</string>"),
              HasSubstr("invalid us-ascii at byte 49"));
}

TEST(XmlReader, repeatsOnlyPlainElementNamesInErrors) {
  EXPECT_THAT(problemOf("<" + std::string(40, 'm') + ">"),
              HasSubstr("the unknown element <" + std::string(40, 'm') + "> on"));
  for (const std::string& name : {std::string(41, 'm'), std::string("o\0\x1B[2J", 6), std::string("\xFF")})
    EXPECT_THAT(problemOf("<" + name + ">"), HasSubstr(": an unknown element on line 1."));
}

TEST(XmlReader, repeatsOnlyPlainEncodingNamesInErrors) {
  const auto problem = [](const std::string& name) {
    return problemOf("<?xml version='1.0' encoding='" + name + "'?><string>a</string>");
  };
  EXPECT_THAT(problem(std::string(40, 'm')), HasSubstr("unknown encoding “" + std::string(40, 'm') + "”"));
  for (const std::string& name : {std::string(41, 'm'), std::string(1'000'000, 'm'), std::string("mar\ntian"),
                                  std::string("\x1B[2J"), std::string("4"), std::string()})
    EXPECT_THAT(problem(name), HasSubstr(": an invalid encoding name in the XML declaration."));
}

TEST(XmlReader, readsBase64AsOnThePlatform) {
  const auto dataOf = [](const std::string& text) {
    return std::string(read("<data>" + text + "</data>").data()->text());
  };
  EXPECT_EQ(dataOf(""), "");
  EXPECT_EQ(dataOf("\n\tYWJj\n\tZGVm\n\t"), "abcdef");
  EXPECT_EQ(dataOf("YWI="), "ab");
  EXPECT_EQ(dataOf("YQ=="), "a");
  EXPECT_EQ(dataOf("YW!Jj"), "abc");
  EXPECT_EQ(dataOf("YWJjZ"), "abc");
  EXPECT_EQ(dataOf("YR=="), "a");
  EXPECT_THAT(problemOf("<data>YW\xC3\xA9Jj</data>"), HasSubstr("a non-ASCII character in <data>"));
}

TEST(XmlFormat, roundTripsIntegers) {
  for (const PlistInteger integer :
       {PlistInteger(0), PlistInteger(-1), PlistInteger(std::numeric_limits<std::int64_t>::min()),
        PlistInteger(std::numeric_limits<std::int64_t>::max()),
        PlistInteger(std::numeric_limits<std::uint64_t>::max())})
    EXPECT_EQ(read(write(integer)), PlistValue(integer)) << integer.decimal();
  EXPECT_THAT(problemOf("<integer>18446744073709551616</integer>"), HasSubstr("out of range"));
  EXPECT_THAT(problemOf("<integer>-9223372036854775809</integer>"), HasSubstr("out of range"));
}

TEST(XmlFormat, roundTripsReals) {
  for (const double real : {0.0, -0.0, 0.1, -1e-300, 5e-324, std::numeric_limits<double>::max(), 1e17, 123456789.125,
                            std::numeric_limits<double>::infinity(), -std::numeric_limits<double>::infinity(),
                            std::numeric_limits<double>::quiet_NaN()})
    EXPECT_EQ(read(write(real)), PlistValue(real)) << real;
  EXPECT_THAT(write(-0.0), HasSubstr("<real>-0.0</real>"));
}

TEST(XmlFormat, roundsDatesDownToSeconds) {
  EXPECT_EQ(read(write(PlistDate{725846400.75})), PlistValue(PlistDate{725846400}));
  EXPECT_EQ(read(write(PlistDate{-0.25})), PlistValue(PlistDate{-1}));
  for (const double seconds : {-63113904000.0, -1e12, 1e12, 978307200.0, 951868800.0 - 978307200.0})
    EXPECT_EQ(read(write(PlistDate{seconds})), PlistValue(PlistDate{seconds})) << seconds;
}

TEST(XmlFormat, roundTripsEveryDayOf800Years) {
  // Each day also differs from the day before.
  std::string previous = write(PlistDate{-32000000000.0});
  for (int day = -146097; day < 146097; ++day) {
    const double seconds = 86400.0 * day;
    const std::string text = write(PlistDate{seconds});
    ASSERT_EQ(read(text), PlistValue(PlistDate{seconds})) << text;
    ASSERT_NE(text, previous);
    previous = text;
  }
}

TEST(XmlWriter, refusesValuesThatXmlCannotRepresent) {
  EXPECT_THROW(write(std::u16string(1, char16_t{0xD800})), Error);
  EXPECT_THROW(write(PlistDate{1e300}), Error);
  EXPECT_THROW(write(PlistDate{std::numeric_limits<double>::quiet_NaN()}), Error);
}

// Writes a value inside an array, so that the writer cannot rewrite the file that the value is from.
std::string writtenAnew(const PlistValue& value) { return write(PlistValue::array({value})); }

TEST(XmlWriter, breaksBase64AsOnThePlatform) {
  const PlistValue broken =
      read("<data>\n  AAECAwQF BgcICQoLDA0ODxAREhMUFRYXGBka\r\n GxwdHh8gISIjJCUmJygpKissLS4vMDEyMzQ1Njc4\tOTo=</data>");
  EXPECT_EQ(writtenAnew(broken),
            head +
                "<array>\n\t<data>\n\tAAECAwQFBgcICQoLDA0ODxAREhMUFRYXGBkaGxwdHh8gISIjJCUmJygpKissLS4vMDEy\n\t"
                "MzQ1Njc4OTo=\n\t</data>\n</array>\n</plist>\n");
  EXPECT_EQ(writtenAnew(broken), writtenAnew(deepCopy(broken)));
}

TEST(XmlWriter, writesTheCanonicalForm) {
  EXPECT_EQ(writtenAnew(read("<dict><key>a&quot;></key>\n\n<array  ></array><key>b</key><string/></dict>")),
            head +
                "<array>\n\t<dict>\n\t\t<key>a\"&gt;</key>\n\t\t<array/>\n\t\t<key>b</key>\n\t\t<string></string>\n\t</"
                "dict>\n"
                "</array>\n</plist>\n");
}

TEST(XmlWriter, escapesARawGreaterThanSign) {
  EXPECT_EQ(writtenAnew(read(
                "<dict><key>a > b</key><string>></string><key>c</key><string>a rather long text > and >> more</string>"
                "</dict>")),
            head +
                "<array>\n\t<dict>\n\t\t<key>a &gt; b</key>\n\t\t<string>&gt;</string>\n\t\t<key>c</key>\n"
                "\t\t<string>a rather long text &gt; and &gt;&gt; more</string>\n\t</dict>\n</array>\n</plist>\n");
}

const std::string handWritten =
    "<plist><!-- mine --><dict><key>Children</key>\n<array>\n"
    "  <dict><key>Title</key><string>bar</string><key>WebBookmarkType</key><string>WebBookmarkTypeList</string>\n"
    "  <key>Children</key><array>\n"
    "    <dict ><key>Title</key><string>b "
    "&amp;#</string><key>WebBookmarkType</key><string>WebBookmarkTypeLeaf</string></dict><!-- first -->\n"
    "    <dict><key>Title</key><string>a</string><key>WebBookmarkType</key><string>WebBookmarkTypeLeaf</string><!-- "
    "a's --></dict>\n"
    "  </array></dict>\n"
    "</array></dict></plist> and more";

TEST(XmlRewriter, movesElementsAndKeepsAllOtherBytes) {
  const VirtualMachine machine;
  EXPECT_EQ(
      write(sorted(read(handWritten), true)),
      "<plist><!-- mine --><dict><key>Children</key>\n<array>\n"
      "  <dict><key>Title</key><string>bar</string><key>WebBookmarkType</key><string>WebBookmarkTypeList</string>\n"
      "  <key>Children</key><array>\n"
      "    <dict><key>Title</key><string>a</string><key>WebBookmarkType</key><string>WebBookmarkTypeLeaf</string><!-- "
      "a's "
      "--></dict><!-- first -->\n"
      "    <dict ><key>Title</key><string>b "
      "&amp;#</string><key>WebBookmarkType</key><string>WebBookmarkTypeLeaf</string></dict>\n"
      "  </array></dict>\n"
      "</array></dict></plist> and more");
}

TEST(XmlRewriter, keepsTheByteOrderMarkAndEveryValue) {
  const VirtualMachine machine;
  const std::string mark = "\xEF\xBB\xBF";
  EXPECT_EQ(write(sorted(read(mark + handWritten), true)), mark + write(sorted(read(handWritten), true)));
  const std::string escaped = mark + "<!-- b --><string>a&#13;</string>";
  EXPECT_EQ(write(read(escaped)), escaped);
}

TEST(XmlRewriter, refusesFilesInOtherEncodings) {
  const std::u16string utf16 = u"\uFEFF<string>a&#13;</string>";
  for (const std::string& text : {std::string("<?xml version='1.0' encoding='ISO-8859-1'?><string>\xE9</string>"),
                                  std::string(reinterpret_cast<const char*>(utf16.data()), 2 * utf16.size())}) {
    try {
      write(read(text));
      ADD_FAILURE() << text;
    } catch (const Error& error) {
      EXPECT_EQ(
          error.description(),
          "The property list couldn’t be written: it is XML in another encoding than UTF-8, which can be read but "
          "not written.");
    }
  }
}

TEST(XmlRewriter, agreesWithTheWriterOnRandomTrees) {
  const VirtualMachine machine;
  constexpr unsigned seed = 20261121;
  std::mt19937 random(seed);
  const std::function<PlistValue(unsigned)> folder = [&](unsigned depth) {
    std::vector<PlistValue> children;
    for (auto count = random() % 7; count > 0; --count)
      children.push_back(
          depth > 0 && random() % 2 == 0
              ? folder(depth - 1)
              : PlistValue::dictionary({{u"WebBookmarkType", u"WebBookmarkTypeLeaf"},
                                        {u"Title", utf16("<" + std::to_string(random() % 20) + " & more")},
                                        {u"Data", Bytes(std::string(random() % 90, 'x'))}}));
    return PlistValue::dictionary({{u"WebBookmarkType", u"WebBookmarkTypeList"},
                                   {u"Children", PlistValue::array(std::move(children))},
                                   {u"Title", utf16(std::to_string(random() % 20))}});
  };
  for (int round = 0; round < 1000; ++round) {
    const std::string text = write(folder(4));
    const PlistValue inOrder = sorted(read(text), false);
    const std::string rewritten = write(inOrder);
    ASSERT_EQ(read(rewritten), inOrder) << "seed " << seed << ", round " << round;
    ASSERT_EQ(rewritten, write(deepCopy(inOrder))) << "seed " << seed << ", round " << round;
    const Bytes binary = PropertyListCodec().serialize(folder(4), PropertyListFormat::binary);
    const PlistValue binaryInOrder = sorted(PropertyListCodec().parse(binary).value, false);
    ASSERT_EQ(PropertyListCodec().parse(PropertyListCodec().serialize(binaryInOrder, PropertyListFormat::binary)).value,
              binaryInOrder)
        << "seed " << seed << ", round " << round;
  }
}

}  // namespace
