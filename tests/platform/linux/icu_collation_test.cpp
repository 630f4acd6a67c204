// The order of titles by the rules of ICU, in other languages too, and the locale of the environment.
#include "platform/linux/icu_collation.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "tests/support/environment_scope.h"
#include "tests/support/increasing_texts.h"

namespace {

TEST(IcuCollation, putsFewerLeadingZerosFirst) {
  expectIncreasing(IcuCollation("en"), {u"a1b1", u"a1b01", u"a1b001", u"a01b1", u"a01b01", u"a001b1", u"a1b2", u"a2"});
  expectIncreasing(IcuCollation("en"), {u"0", u"00", u"000", u"1"});
  expectIncreasing(IcuCollation("en"), {u"٠", u"0٠", u"٠00", u"1", u"0١"});
}

TEST(IcuCollation, ordersEquivalentTextsByCodePoints) {
  // Full-width zero is at U+FF10, mathematical zero beyond the first plane; both are the number 0.
  expectIncreasing(IcuCollation("en"), {u"0", u"\uFF10", u"\U0001D7CE"});
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
