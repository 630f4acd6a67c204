// The fast path for the order of titles, compared with the collator's sort keys for all pairs of many texts.
#include "platform/linux/primary_ranks.h"

#include <gtest/gtest.h>
#include <unicode/ucol.h>

#include <cstdint>
#include <memory>
#include <random>
#include <string>
#include <string_view>
#include <vector>

namespace {

using Collator = std::unique_ptr<UCollator, decltype(&ucol_close)>;
using SortKey = std::vector<std::uint8_t>;

Collator open(const std::string& locale) {
  UErrorCode status = U_ZERO_ERROR;
  Collator collator(ucol_open(locale.c_str(), &status), ucol_close);
  ucol_setAttribute(collator.get(), UCOL_NUMERIC_COLLATION, UCOL_ON, &status);
  EXPECT_TRUE(U_SUCCESS(status)) << locale;
  return collator;
}

SortKey sortKey(const UCollator* collator, const std::u16string& text) {
  SortKey key(64 + 8 * text.size());
  key.resize(static_cast<std::size_t>(ucol_getSortKey(collator, text.data(), static_cast<std::int32_t>(text.size()),
                                                      key.data(), static_cast<std::int32_t>(key.size()))));
  return key;
}

std::string shown(std::u16string_view text) {
  std::string units;
  for (const char16_t unit : text) units += std::to_string(static_cast<unsigned>(unit)) + ' ';
  return units;
}

// Compares all pairs. Returns the share of the pairs that the ranks decide.
double compareAllPairs(const std::string& locale, const std::vector<std::u16string>& texts) {
  const Collator collator = open(locale);
  const PrimaryRanks ranks(collator.get());
  std::vector<SortKey> keys;
  keys.reserve(texts.size());
  for (const std::u16string& text : texts) keys.push_back(sortKey(collator.get(), text));
  std::size_t decided = 0;
  for (std::size_t a = 0; a < texts.size(); ++a) {
    for (std::size_t b = 0; b < texts.size(); ++b) {
      const auto order = ranks.compare(texts[a], texts[b]);
      if (std::is_eq(order)) continue;
      ++decided;
      if (order != keys[a] <=> keys[b]) {
        ADD_FAILURE() << locale << ": " << shown(texts[a]) << "and " << shown(texts[b]);
        return 0;
      }
    }
  }
  return static_cast<double>(decided) / static_cast<double>(texts.size() * texts.size());
}

std::vector<std::string> allLocales() {
  std::vector<std::string> names = {"root", "es__TRADITIONAL", "de__PHONEBOOK", "de_AT@collation=phonebook",
                                    "es@collation=traditional"};
  for (std::int32_t index = 0; index < ucol_countAvailable(); ++index) names.emplace_back(ucol_getAvailable(index));
  return names;
}

// Returns random texts of a few of these units.
std::vector<std::u16string> randomTexts(std::u16string_view units, std::size_t count, unsigned seed) {
  std::mt19937 random(seed);  // NOLINT(cert-msc32-c,cert-msc51-cpp): the same texts every time
  std::uniform_int_distribution<std::size_t> length(0, 5);
  std::uniform_int_distribution<std::size_t> choice(0, units.size() - 1);
  std::vector<std::u16string> texts(count);
  for (std::u16string& text : texts)
    for (std::size_t left = length(random); left > 0; --left) text += units[choice(random)];
  return texts;
}

std::u16string unitsFrom(char16_t first, char16_t last) {
  std::u16string units;
  for (unsigned unit = first; unit <= last; ++unit) units += static_cast<char16_t>(unit);
  return units;
}

TEST(PrimaryRanks, agreeWithTheSortKeysOfEachCharacter) {
  std::vector<std::u16string> alone;
  std::vector<std::u16string> first;
  std::vector<std::u16string> second;
  for (const char16_t unit : unitsFrom(0, 0x47F)) {
    alone.push_back({unit});
    first.push_back({unit, u'm'});
    second.push_back({u'm', unit});
  }
  for (const char* locale : {"root", "en", "de", "sv", "el", "ru", "uk", "sr"})
    for (const auto* texts : {&alone, &first, &second}) compareAllPairs(locale, *texts);
}

// The letters that the contractions and expansions of some locale have, and characters that may follow them.
TEST(PrimaryRanks, agreeInEveryLocaleAboutContractions) {
  const std::u16string units =
      u"ccCChHsSzZddDlLnNjJgGaAoOeuyYkqrtwxp'"
      u"·ñäåæßøœ\u0301\u0303\u0308\u030A\u0323\u0338\u00AD\u200B\u0E40иИйіь\u0306αι";
  for (const std::string& locale : allLocales()) {
    compareAllPairs(locale, randomTexts(units, 300, 1));
    compareAllPairs(locale, randomTexts(u"chsdz'C", 200, 2));
    compareAllPairs(locale, randomTexts(u"aAeo\u0301\u0308\u030A", 150, 3));
  }
}

TEST(PrimaryRanks, agreeInEveryLocaleAboutNumbers) {
  const std::u16string units = u"0001129aB -.\u0661\u0660\uFF11²½\U0001D7CE\u0301";
  for (const std::string& locale : allLocales()) compareAllPairs(locale, randomTexts(units, 250, 4));
}

TEST(PrimaryRanks, agreeAboutLongNumbers) {
  std::vector<std::u16string> texts;
  for (const std::size_t length : {1U, 253U, 254U, 255U, 256U, 508U, 509U})
    for (const char16_t last : {u'1', u'2', u'a', u' '})
      for (const char16_t first : {u'0', u'1', u'9'}) texts.push_back(std::u16string(length, first) + last);
  compareAllPairs("en", texts);
}

TEST(PrimaryRanks, decideNearlyAllPairsOfEnglishTitles) {
  std::u16string units = unitsFrom(u' ', u'~');
  for (const char* locale : {"root", "en", "de", "fr_CA", "it", "ru"}) {
    EXPECT_GT(compareAllPairs(locale, randomTexts(units, 400, 5)), 0.95) << locale;
    EXPECT_GT(compareAllPairs(locale, randomTexts(u"абвгдежзиклмн", 400, 6)), 0.8) << locale;
  }
  EXPECT_GT(compareAllPairs("sv", randomTexts(units, 400, 7)), 0.95);
}

TEST(PrimaryRanks, leaveTailoredLettersToTheCollator) {
  const auto decides = [](const std::string& locale, std::u16string_view a, std::u16string_view b) {
    return std::is_neq(PrimaryRanks(open(locale).get()).compare(a, b));
  };
  EXPECT_TRUE(decides("en", u"ch", u"d"));
  EXPECT_FALSE(decides("cs", u"ch", u"d"));
  EXPECT_TRUE(decides("cs", u"ca", u"d"));
  EXPECT_FALSE(decides("hu", u"ccsa", u"d"));
  EXPECT_FALSE(decides("sv", u"å", u"b"));
  EXPECT_FALSE(decides("sv", u"a\u030A", u"b"));
  EXPECT_FALSE(decides("br", u"c'h", u"c'i"));
}

TEST(PrimaryRanks, leaveLettersOfEqualWeightToTheCollator) {
  const Collator collator = open("en");
  const PrimaryRanks ranks(collator.get());
  EXPECT_EQ(ranks.compare(u"resume", u"Résumé"), std::strong_ordering::equal);
  EXPECT_EQ(ranks.compare(u"Résumé 2", u"resume 10"), std::strong_ordering::less);
  EXPECT_EQ(ranks.compare(u"a 01", u"a 1"), std::strong_ordering::equal);
}

TEST(PrimaryRanks, decideNothingWhereSpacesHaveNoWeight) {
  for (const char* locale : {"th", "zh", "ja", "ko"})
    EXPECT_EQ(compareAllPairs(locale, randomTexts(u"abc -", 50, 8)), 0) << locale;
}

}  // namespace
