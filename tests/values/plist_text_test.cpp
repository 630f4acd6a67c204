// The text of strings: UTF-16 units in every encoding.
#include "values/plist_text.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "values/plist_value.h"

namespace {

std::string bigEndian(std::u16string_view units) {
  std::string bytes;
  for (const char16_t unit : units) {
    bytes.push_back(static_cast<char>(unit >> 8));
    bytes.push_back(static_cast<char>(unit & 0xFF));
  }
  return bytes;
}

// A text in every encoding that can represent it, at odd addresses where the encoding allows them.
class Stored {
 public:
  explicit Stored(std::u16string units) : units_(std::move(units)) {
    bool isLatin1 = true;
    for (const char16_t unit : units_) {
      isLatin1 = isLatin1 && unit <= 0xFF;
      latin1_.push_back(static_cast<char>(unit));
    }
    bigEndian_ += bigEndian(units_);
    texts.emplace_back(units_);
    texts.emplace_back(bigEndian_.data() + 1, units_.size(), PlistEncoding::utf16BigEndian);
    if (isLatin1) texts.emplace_back(latin1_.data() + 1, units_.size(), PlistEncoding::latin1);
    utf8_ += utf8(units_);
    const std::string_view encoded = std::string_view(utf8_).substr(1);
    if (utf16(encoded) == units_) texts.emplace_back(encoded.data(), encoded.size(), PlistEncoding::utf8);
  }
  Stored(const Stored&) = delete;
  Stored& operator=(const Stored&) = delete;

  const std::u16string& units() const { return units_; }
  std::vector<PlistText> texts;

 private:
  std::u16string units_;
  std::string latin1_ = "-";
  std::string bigEndian_ = "-";
  std::string utf8_ = "-";
};

const std::vector<std::u16string> samples = {
    u"",
    u"a",
    u"Title",
    u"Titel",
    u"WebBookmarkTypeList",
    u"\u00E9t\u00E9",
    u"\u00E9te",
    u"e\u0301te\u0301",
    u"\u0416",
    u"\U0001F600 smile",
    u"\U0001F601 smile",
    u"\uFFFD",
    u"\uFFFF",
    u"a\rb\n",
    std::u16string(u"nul\0inside", 10),
    std::u16string(u"nul\0outside", 11),
    std::u16string(1, u'\xD83D'),
    std::u16string(1, u'\xDE00'),
    std::u16string{u'\xDE00', u'\xD83D'},
    u"a key that is longer than any that is compared byte for byte",
};

TEST(PlistText, hasTheSameUnitsInEveryEncoding) {
  for (const std::u16string& sample : samples)
    for (const Stored stored(sample); const PlistText& text : stored.texts) {
      EXPECT_EQ(text.utf16(), sample);
      std::u16string appended = u"before ";
      text.appendTo(appended);
      EXPECT_EQ(appended, u"before " + sample);
      EXPECT_EQ(text.empty(), sample.empty());
    }
}

TEST(PlistText, isEqualByUnitsAcrossEncodings) {
  for (const std::u16string& left : samples)
    for (const std::u16string& right : samples) {
      const Stored a(left);
      const Stored b(right);
      for (const PlistText& x : a.texts)
        for (const PlistText& y : b.texts) {
          EXPECT_EQ(x == y, left == right) << utf8(left) << " and " << utf8(right);
          EXPECT_EQ(x == std::u16string_view(right), left == right) << utf8(left) << " and " << utf8(right);
        }
    }
}

TEST(PlistText, hasTheSameHashInEveryEncoding) {
  for (const std::u16string& sample : samples) {
    const Stored stored(sample);
    for (const PlistText& text : stored.texts) EXPECT_EQ(text.hash(), PlistKey(sample).hash()) << utf8(sample);
  }
}

TEST(PlistText, equalsAKeyByUnits) {
  for (const std::u16string& sample : samples)
    for (const std::u16string& key : samples)
      for (const Stored stored(sample); const PlistText& text : stored.texts)
        EXPECT_EQ(text == PlistKey(key), sample == key) << utf8(sample) << " and " << utf8(key);
}

TEST(PlistText, isNotNormalised) { EXPECT_FALSE(PlistText(u"\u00E9") == PlistText(u"e\u0301")); }

TEST(PlistText, startsWithItsPrefixes) {
  const std::u16string sample = u"com.apple.\u00E9\U0001F600";
  for (const Stored stored(sample); const PlistText& text : stored.texts) {
    for (std::size_t length = 0; length <= sample.size(); ++length)
      EXPECT_TRUE(text.startsWith(sample.substr(0, length))) << length;
    EXPECT_FALSE(text.startsWith(sample + u"x"));
    EXPECT_FALSE(text.startsWith(u"Com.apple."));
    EXPECT_FALSE(text.startsWith(u"com.apply."));
  }
  for (const Stored stored{std::u16string()}; const PlistText& text : stored.texts) {
    EXPECT_TRUE(text.startsWith(u""));
    EXPECT_FALSE(text.startsWith(u"c"));
  }
}

TEST(Utf8, recognisesWellFormedText) {
  for (const char* text : {"", "a", "\xC2\x80", "\xDF\xBF", "\xE0\xA0\x80", "\xED\x9F\xBF", "\xEE\x80\x80",
                           "\xEF\xBF\xBF", "\xF0\x90\x80\x80", "\xF4\x8F\xBF\xBF"})
    EXPECT_TRUE(isWellFormedUtf8(text)) << text;
  EXPECT_TRUE(isWellFormedUtf8(std::string_view("\0", 1)));
  const std::vector<std::string> overlong = {"\xC0\x80", "\xC1\xBF", "\xE0\x9F\xBF", "\xF0\x8F\xBF\xBF"};
  const std::vector<std::string> surrogates = {"\xED\xA0\x80", "\xED\xBF\xBF"};
  const std::vector<std::string> outside = {"\xF4\x90\x80\x80", "\xF5\x80\x80\x80", "\xFF", "\xFE"};
  const std::vector<std::string> broken = {"\x80",         "a\xBF",    "\xC2",         "\xE2\x82",
                                           "\xF0\x9F\x98", "\xC2\x41", "\xE2\x82\x41", "\xE2\x41\x82"};
  for (const auto& texts : {overlong, surrogates, outside, broken})
    for (const std::string& text : texts) EXPECT_FALSE(isWellFormedUtf8(text)) << testing::PrintToString(text);
}

TEST(Utf8, roundTripsEveryScalar) {
  for (char32_t scalar = 0; scalar <= 0x10FFFF; ++scalar) {
    if (scalar >= 0xD800 && scalar <= 0xDFFF) continue;
    std::u16string units;
    if (scalar < 0x10000) {
      units = {static_cast<char16_t>(scalar)};
    } else {
      units = {static_cast<char16_t>(0xD7C0 + (scalar >> 10)), static_cast<char16_t>(0xDC00 | (scalar & 0x3FF))};
    }
    const std::string text = utf8(units);
    ASSERT_TRUE(isWellFormedUtf8(text)) << static_cast<std::uint32_t>(scalar);
    ASSERT_EQ(utf16(text), units) << static_cast<std::uint32_t>(scalar);
  }
}

TEST(Utf8, replacesUnpairedSurrogates) {
  EXPECT_EQ(utf8(std::u16string{u'a', u'\xD83D'}), "a\uFFFD");
  EXPECT_EQ(utf8(std::u16string{u'\xD83D', u'b'}), "\uFFFDb");
  EXPECT_EQ(utf8(std::u16string{u'\xDE00', u'\xD83D', u'\xDE00'}), "\uFFFD\U0001F600");
}

TEST(Utf16, replacesMalformedSequences) {
  EXPECT_EQ(utf16("a\xFF"
                  "b"),
            u"a\uFFFDb");
  EXPECT_EQ(utf16("\xE2\x82"), u"\uFFFD\uFFFD");
}

}  // namespace
