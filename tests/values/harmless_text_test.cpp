// Text from outside, made safe for a terminal.
#include "values/harmless_text.h"

#include <gtest/gtest.h>

#include <string>

#include "values/plist_text.h"

namespace {

TEST(HarmlessText, leavesPlainTextUnchanged) {
  for (const char* text : {"", "Chapter 10", "a\\b \"c\"", "éclairs", "アニメ", "🚀 Launches", "e\u0301", "שלום",
                           "a\u00A0b", "👩\u200D🚀", "\uFFF8", "\U000E0080"})
    EXPECT_EQ(harmlessLine(std::string_view(text)), text);
}

TEST(HarmlessText, escapesControlSequences) {
  EXPECT_EQ(harmlessLine(std::string_view("\x1b]0;title\x07\x1b[2Jx")), "\\u{1B}]0;title\\u{07}\\u{1B}[2Jx");
  EXPECT_EQ(harmlessLine(u"\u009B31mred"), "\\u{9B}31mred") << "the same control in one character";
}

TEST(HarmlessText, escapesEveryControlCharacter) {
  for (unsigned character = 0; character < 0xA0; ++character) {
    const bool isControl = character < 0x20 || character >= 0x7F;
    const std::u16string text(1, static_cast<char16_t>(character));
    EXPECT_EQ(harmlessLine(text) != utf8(text), isControl) << character;
  }
}

TEST(HarmlessText, escapesDirectionControlsAndLineSeparators) {
  for (const char16_t unit : {u'\u202A', u'\u202B', u'\u202C', u'\u202D', u'\u202E', u'\u2066', u'\u2067', u'\u2068',
                              u'\u2069', u'\u2028', u'\u2029'})
    EXPECT_EQ(harmlessLine(std::u16string(1, unit)).substr(0, 5), "\\u{20") << static_cast<unsigned>(unit);
  EXPECT_EQ(harmlessLine(u"\u202Egpj.exe"), "\\u{202E}gpj.exe");
}

TEST(HarmlessText, escapesMarksOfDirection) {
  EXPECT_EQ(harmlessLine(u"a\u200Eb\u200Fc\u061Cd"), "a\\u{200E}b\\u{200F}c\\u{61C}d");
}

TEST(HarmlessText, escapesInvisibleTagsAndAnnotations) {
  EXPECT_EQ(harmlessLine(u"\uFFF9a\uFFFAb\uFFFB"), "\\u{FFF9}a\\u{FFFA}b\\u{FFFB}");
  EXPECT_EQ(harmlessLine(u"x\U000E0041y"), "x\\u{E0041}y");
  for (char32_t character = 0xE0000; character < 0xE0080; ++character) {
    const std::u16string pair = {u'\xDB40', static_cast<char16_t>(0xDC00 + (character & 0x7F))};
    EXPECT_EQ(harmlessLine(pair).substr(0, 6), "\\u{E00") << static_cast<unsigned>(character);
    EXPECT_EQ(harmlessText(utf8(pair)), harmlessLine(pair));
  }
}

TEST(HarmlessText, replacesMalformedText) {
  EXPECT_EQ(harmlessLine(std::string_view("a\x9B"
                                          "b")),
            "a\uFFFDb")
      << "a byte that some terminals take as a control character";
  EXPECT_EQ(harmlessLine(std::u16string(1, static_cast<char16_t>(0xD800))), "\uFFFD");
  EXPECT_EQ(harmlessLine(std::u16string(1, static_cast<char16_t>(0xDB40))), "\uFFFD");
}

TEST(HarmlessText, escapesLineFeedsAndTabsInALine) {
  EXPECT_EQ(harmlessLine(std::string_view("a\nb\tc\r")), "a\\u{0A}b\\u{09}c\\u{0D}");
}

TEST(HarmlessText, keepsLineFeedsAndTabsInSeveralLines) {
  EXPECT_EQ(harmlessText("a\n\nb\tc\rd\x1b[m"), "a\n\nb\tc\\u{0D}d\\u{1B}[m");
}

}  // namespace
