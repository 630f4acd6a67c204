// The order of titles, compared with recorded results of Foundation.
#include "platform/linux/icu_collation.h"

#include <gtest/gtest.h>
#include <unicode/ustring.h>

#include <algorithm>
#include <compare>
#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>
#include <random>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "tests/platform/linux/environment_scope.h"

namespace {

const nlohmann::json& titles() {
  static const nlohmann::json json =
      nlohmann::json::parse(std::ifstream(std::filesystem::path(QUILLERY_TEST_DATA) / "titles.json"));
  return json;
}

std::u16string utf16(const std::string& utf8) {
  std::u16string text(utf8.size(), u'\0');
  std::int32_t length = 0;
  UErrorCode status = U_ZERO_ERROR;
  u_strFromUTF8(text.data(), static_cast<std::int32_t>(text.size()), &length, utf8.data(),
                static_cast<std::int32_t>(utf8.size()), &status);
  EXPECT_TRUE(U_SUCCESS(status)) << utf8;
  text.resize(static_cast<std::size_t>(length));
  return text;
}

// Returns the units in hexadecimal, because different texts may look the same in a message.
std::string units(const std::u16string& text) {
  std::ostringstream shown;
  for (const char16_t unit : text) shown << std::hex << static_cast<unsigned>(unit) << ' ';
  return shown.str();
}

int sign(std::strong_ordering order) { return std::is_lt(order) ? -1 : std::is_gt(order) ? 1 : 0; }

std::vector<std::string> locales() {
  std::vector<std::string> names;
  for (const auto& [locale, ordered] : titles().items()) names.push_back(locale);
  return names;
}

class TitlesOfALocale : public testing::TestWithParam<std::string> {};

TEST_P(TitlesOfALocale, areInFoundationsOrderPairByPair) {
  const IcuCollation collation(GetParam());
  const auto ordered = titles().at(GetParam()).get<std::vector<std::string>>();
  ASSERT_GT(ordered.size(), 10U);
  for (std::size_t first = 0; first < ordered.size(); ++first)
    for (std::size_t second = 0; second < ordered.size(); ++second)
      EXPECT_EQ(sign(collation.localizedStandardCompare(utf16(ordered[first]), utf16(ordered[second]))),
                sign(first <=> second))
          << '"' << ordered[first] << "\" and \"" << ordered[second] << '"';
}

INSTANTIATE_TEST_SUITE_P(Locales, TitlesOfALocale, testing::ValuesIn(locales()),
                         [](const auto& information) { return information.param; });

void expectIncreasing(const IcuCollation& collation, const std::vector<std::u16string>& texts) {
  for (std::size_t first = 0; first < texts.size(); ++first)
    for (std::size_t second = 0; second < texts.size(); ++second)
      EXPECT_EQ(sign(collation.localizedStandardCompare(texts[first], texts[second])), sign(first <=> second))
          << units(texts[first]) << "and " << units(texts[second]);
}

TEST(IcuCollation, ordersLettersBeforeCase) {
  expectIncreasing(IcuCollation("en"), {u"a", u"A", u"apple", u"Apple", u"b", u"B"});
}

TEST(IcuCollation, putsFewerLeadingZerosFirst) {
  expectIncreasing(IcuCollation("en"), {u"a1b1", u"a1b01", u"a1b001", u"a01b1", u"a01b01", u"a001b1", u"a1b2", u"a2"});
  expectIncreasing(IcuCollation("en"), {u"0", u"00", u"000", u"1"});
  expectIncreasing(IcuCollation("en"), {u"٠", u"0٠", u"٠00", u"1", u"0١"});
}

TEST(IcuCollation, ordersEquivalentTextsByCodePoints) {
  // Full-width zero is at U+FF10, mathematical zero beyond the first plane; both are the number 0.
  expectIncreasing(IcuCollation("en"), {u"0", u"\uFF10", u"\U0001D7CE"});
}

TEST(IcuCollation, treatsOnlyIdenticalTextAsEqual) {
  const IcuCollation collation("en");
  EXPECT_EQ(collation.localizedStandardCompare(u"", u""), std::strong_ordering::equal);
  EXPECT_EQ(collation.localizedStandardCompare(u"Item 2", u"Item 2"), std::strong_ordering::equal);
  EXPECT_NE(collation.localizedStandardCompare(u"\u00E9", u"e\u0301"), std::strong_ordering::equal);
  EXPECT_NE(collation.localizedStandardCompare(u"ab", u"a\u00ADb"), std::strong_ordering::equal);
  const std::u16string_view withNull(u"a\0", 2);
  EXPECT_NE(collation.localizedStandardCompare(u"a", withNull), std::strong_ordering::equal);
}

TEST(IcuCollation, comparesNumbersOfAnyLength) {
  const std::u16string nines(250, u'9');
  expectIncreasing(IcuCollation("en"), {u"1", nines.substr(1), nines, u"1" + std::u16string(250, u'0')});
}

// Numbers with digits outside ASCII that share a prefix.
TEST(IcuCollation, comparesNumbersOfEveryScriptByTheirValue) {
  for (const char* locale : {"root", "en", "sv", "ja"}) {
    const IcuCollation collation(locale);
    expectIncreasing(collation, {u"e1a", u"e1\uFF10", u"e1\uFF11"});
    expectIncreasing(collation, {u"\u0662\u0660", u"\u0662\u0660a", u"\u0662\u06600", u"\u0662\u0660\u0660"});
    expectIncreasing(collation, {u"1 \U0001D7CE", u"1\U0001D7CE", u"1\U0001D7CFa", u"1\U0001D7CF\U0001D7CE"});
    expectIncreasing(collation, {u"\u0661\u0e40", u"1\u0660"});
  }
}

TEST(IcuCollation, comparesLongRunsOfMarksInLinearTime) {
  // Vietnamese puts marks into canonical order before it compares. In quadratic time this would take minutes.
  std::u16string marks;
  for (int pair = 0; pair < 100'000; ++pair) marks += u"\u0301\u0323";
  const IcuCollation collation("vi");
  expectIncreasing(collation, {u"d", u"e" + marks, u"E" + marks, u"e" + marks + u"a", u"e" + marks + u"b", u"g"});
  expectIncreasing(collation, {u"e\u0301\u0323", u"e\u0323\u0301", u"f"});
}

TEST(IcuCollation, comparesAccentsFromTheEndInCanadianFrench) {
  expectIncreasing(IcuCollation("fr"), {u"cote", u"cot\u00E9", u"c\u00F4te", u"c\u00F4t\u00E9"});
  const IcuCollation canadian("fr_CA");
  expectIncreasing(canadian, {u"cote", u"c\u00F4te", u"cot\u00E9", u"c\u00F4t\u00E9", u"cotes"});
  expectIncreasing(canadian, {u"a\u0327\u00AD\u0301", u"a\u0327"});
  expectIncreasing(canadian, {u"1\u0660", u"1\u0661", u"1\u0661\u0661"});
}

// Returns texts of few different characters, so that the rules interact: digits and zeros of several scripts, letters
// that contract, accents, ignorable characters and halves of surrogate pairs.
std::vector<std::u16string> randomTexts(std::size_t count, std::mt19937& random) {
  const std::u16string characters = {u'0',   u'0',   u'1',   u'1',   u'a',   u'A',   u'b',   u'c',
                                     u'l',   u'j',   u' ',   u'-',   0x0000, 0x00AD, 0x00E9, u'e',
                                     0x0301, 0x0327, 0x0660, 0x0661, 0x0E01, 0x0E40, 0x200B, 0xFF10,
                                     0xE000, 0xFFFF, 0xD835, 0xDFCE, 0xD800, 0xDC00, 0xDFFF};
  std::uniform_int_distribution<std::size_t> length(0, 6);
  std::uniform_int_distribution<std::size_t> choice(0, characters.size() - 1);
  std::vector<std::u16string> texts(count);
  for (std::u16string& text : texts)
    for (std::size_t left = length(random); left > 0; --left) text += characters[choice(random)];
  return texts;
}

class OrderOfAllTexts : public testing::TestWithParam<std::string> {};

TEST_P(OrderOfAllTexts, isStrictAndTotal) {
  const IcuCollation collation(GetParam());
  std::mt19937 random(20260926);  // NOLINT(cert-msc32-c,cert-msc51-cpp): the same texts every time
  for (int round = 0; round < 20; ++round) {
    std::vector<std::u16string> texts = randomTexts(150, random);
    std::sort(texts.begin(), texts.end());
    texts.erase(std::unique(texts.begin(), texts.end()), texts.end());
    std::stable_sort(texts.begin(), texts.end(), [&](const std::u16string& a, const std::u16string& b) {
      return std::is_lt(collation.localizedStandardCompare(a, b));
    });
    // Every pair agrees with the positions in one sequence, so the order is antisymmetric, transitive and total.
    expectIncreasing(collation, texts);
    if (HasFailure()) break;
  }
}

INSTANTIATE_TEST_SUITE_P(Locales, OrderOfAllTexts,
                         testing::Values("root", "en", "sv", "de", "fr_CA", "hr", "th", "ja", "zh"),
                         [](const auto& information) { return information.param; });

// The locale

class CollationLocale : public testing::Test {
 protected:
  EnvironmentScope all_{"LC_ALL", std::nullopt};
  EnvironmentScope collate_{"LC_COLLATE", std::nullopt};
  EnvironmentScope lang_{"LANG", std::nullopt};
};

TEST_F(CollationLocale, isInTheFirstVariableThatIsNotEmpty) {
  lang_.set("de_DE.UTF-8");
  EXPECT_EQ(collationLocale(), "de_DE");
  collate_.set("sv_SE.UTF-8");
  EXPECT_EQ(collationLocale(), "sv_SE");
  all_.set("tr_TR");
  EXPECT_EQ(collationLocale(), "tr_TR");
  all_.set("");
  EXPECT_EQ(collationLocale(), "sv_SE");
}

TEST_F(CollationLocale, hasNeitherEncodingNorModifier) {
  lang_.set("de_DE.ISO-8859-15@euro");
  EXPECT_EQ(collationLocale(), "de_DE");
  lang_.set("sr_RS@latin");
  EXPECT_EQ(collationLocale(), "sr_RS");
}

TEST_F(CollationLocale, isTheRootIfNoLanguageIsNamed) {
  EXPECT_EQ(collationLocale(), "root");
  for (const char* name : {"C", "POSIX", "C.UTF-8", "", ".UTF-8", "/some/path/of/a/locale", "de DE", "../de"}) {
    lang_.set(name);
    EXPECT_EQ(collationLocale(), "root") << name;
  }
}

TEST_F(CollationLocale, ofTheEnvironmentOrdersTitles) {
  lang_.set("sv_SE.UTF-8");
  expectIncreasing(IcuCollation(), {u"a", u"z", u"å", u"ä", u"ö"});
  lang_.set("de_DE.UTF-8");
  expectIncreasing(IcuCollation(), {u"a", u"å", u"ä", u"ö", u"z"});
}

TEST_F(CollationLocale, thatIsUnknownMeansTheRootsOrder) {
  // ICU's own default locale would be Swedish or POSIX here.
  for (const char* environment : {"sv_SE.UTF-8", "C"}) {
    all_.set(environment);
    for (const char* name : {"root", "xx_YY", "nosuchlanguage", "c", "posix", "en_US_POSIX"})
      expectIncreasing(IcuCollation(name), {u"a", u"A", u"ä", u"b", u"B", u"ö", u"z", u"Z"});
  }
}

}  // namespace
