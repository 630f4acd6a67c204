#include "platform/linux/updates/appcast.h"

#include <gtest/gtest.h>

#include <string>

#include "platform/error.h"

namespace {

constexpr const char* start =
    "<?xml version='1.0' encoding='utf-8'?>\n<rss "
    "xmlns:sparkle=\"http://www.andymatuschak.org/xml-namespaces/sparkle\" "
    "xmlns:quillery=\"https://quillery.example.com/appcast\" version=\"2.0\">\n<channel><title>Quillery</title>\n";
constexpr const char* end = "</channel>\n</rss>\n";

// As tools/release/appcast.py writes it.
constexpr const char* item = R"(
    <item>
      <title>Version 0.2.0</title>
      <pubDate>Mon, 21 Sep 2026 08:00:00 +0000</pubDate>
      <sparkle:version>0.2.0</sparkle:version>
      <sparkle:shortVersionString>0.2.0</sparkle:shortVersionString>
      <sparkle:minimumSystemVersion>12</sparkle:minimumSystemVersion>
      <description sparkle:format="plain-text">- Sorts &lt;faster&gt; &amp; better.
- Second line.</description>
      <enclosure url="https://quillery.example.com/a.deb" length="1234" type="application/vnd.debian.binary-package"
        sparkle:os="linux" sparkle:edSignature="c2ln" quillery:processor="amd64" />
    </item>)";

std::vector<AppcastItem> itemsOf(const std::string& body) { return readAppcast(start + body + end); }

// What is wrong with a feed; empty if nothing is.
std::string refusalOf(const std::string& xml) {
  try {
    readAppcast(xml);
    return "";
  } catch (const Error& error) {
    return error.description();
  }
}

TEST(Appcast, readsAnItemAsAReleaseWritesIt) {
  const auto items = itemsOf(item);
  ASSERT_EQ(items.size(), 1);
  EXPECT_EQ(items[0].version, "0.2.0");
  EXPECT_EQ(items[0].shownVersion, "0.2.0");
  EXPECT_EQ(items[0].minimumSystem, "12");
  EXPECT_EQ(items[0].notes, "- Sorts <faster> & better.\n- Second line.");
  EXPECT_EQ(items[0].address, "https://quillery.example.com/a.deb");
  EXPECT_EQ(items[0].length, 1234);
  EXPECT_EQ(items[0].system, "linux");
  EXPECT_EQ(items[0].processor, "amd64");
  EXPECT_EQ(items[0].signature, "c2ln");
}

TEST(Appcast, readsEveryItemAndSkipsWhatItDoesNotKnow) {
  const auto items = itemsOf(std::string("<atom:link xmlns:atom='http://www.w3.org/2005/Atom' href='x'/>") + item +
                             "<item other='x'><guid>1</guid><deep><description>not this</description></deep>"
                             "<enclosure url='https://b' sparkle:version='3'/><sparkle:tags><sparkle:criticalUpdate/>"
                             "</sparkle:tags></item><item/>");
  ASSERT_EQ(items.size(), 3);
  EXPECT_EQ(items[1].version, "3");
  EXPECT_EQ(items[1].shownVersion, "3");
  EXPECT_EQ(items[1].notes, "");
  EXPECT_EQ(items[1].system, "");
  EXPECT_EQ(items[2].address, "");
}

TEST(Appcast, readsAFeedWithoutItems) { EXPECT_EQ(itemsOf("").size(), 0); }

TEST(Appcast, takesOnlyADecimalLength) {
  for (const char* length : {"-1", "1e3", "0x10", "12 34", "", "99999999999999999999999"})
    EXPECT_EQ(itemsOf(std::string("<item><enclosure length='") + length + "'/></item>")[0].length, 0) << length;
}

TEST(Appcast, ignoresItemsOutsideOfTheChannel) {
  EXPECT_EQ(readAppcast("<rss><item/><channel/></rss>").size(), 0);
  EXPECT_EQ(itemsOf("<group><item/></group>").size(), 0);
}

TEST(Appcast, isRefusedIfItIsNone) {
  EXPECT_EQ(refusalOf("<html><body>Not found</body></html>"),
            "The list of updates couldn’t be read: it is not an appcast.");
  for (const char* text : {"", "Not found", "<rss>", "<rss><channel></rss>", "<rss/>", "<a/><b/>", "\xff\xfe"})
    EXPECT_NE(refusalOf(text), "") << text;
}

TEST(Appcast, isRefusedHalfWay) {
  const std::string whole = std::string(start) + item + end;
  for (std::size_t length = 0; length + 2 < whole.size(); ++length)
    EXPECT_NE(refusalOf(whole.substr(0, length)), "") << length;
  EXPECT_EQ(refusalOf(whole), "");
}

TEST(Appcast, isRefusedWithADocumentType) {
  EXPECT_EQ(refusalOf("<!DOCTYPE rss [<!ENTITY a 'aaaa'><!ENTITY b '&a;&a;&a;'>]><rss><channel>&b;</channel></rss>"),
            "The list of updates couldn’t be read: it has a document type.");
  EXPECT_NE(refusalOf("<!DOCTYPE rss SYSTEM 'file:///etc/passwd'><rss><channel/></rss>"), "");
  EXPECT_NE(refusalOf("<rss><channel>&unknown;</channel></rss>"), "");
}

TEST(Appcast, isRefusedIfItIsTooDeepOrTooLarge) {
  std::string open;
  for (int level = 0; level < 40; ++level) open += "<a>";
  EXPECT_EQ(refusalOf("<rss><channel>" + open), "The list of updates couldn’t be read: it has too many levels.");
  std::string items;
  for (int count = 0; count <= 10'000; ++count) items += "<item/>";
  EXPECT_EQ(refusalOf("<rss><channel>" + items), "The list of updates couldn’t be read: it has too many items.");
  EXPECT_EQ(refusalOf(std::string(largestAppcast + 1, ' ')), "The list of updates couldn’t be read: it is too large.");
}

TEST(Appcast, cutsLongNotesAtACharacter) {
  std::string notes = "x";
  while (notes.size() <= longestNotes) notes += "ä";
  const std::string read = itemsOf("<item><description>" + notes + "</description></item>")[0].notes;
  EXPECT_EQ(read.size(), longestNotes - 1);
  EXPECT_EQ(read, notes.substr(0, longestNotes - 1));
}

}  // namespace
