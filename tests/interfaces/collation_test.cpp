// The order of titles, also compared with recorded results of Foundation.
#include "platform/collation.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <compare>
#include <filesystem>
#include <fstream>
#include <functional>
#include <memory>
#include <nlohmann/json.hpp>
#include <ostream>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "tests/interfaces/differences.h"
#include "tests/interfaces/implementations.h"
#include "tests/support/increasing_texts.h"
#include "values/plist_text.h"

namespace {

const nlohmann::json& titles() {
  static const nlohmann::json json =
      nlohmann::json::parse(std::ifstream(std::filesystem::path(QUILLERY_TEST_DATA) / "titles.json"));
  return json;
}

// An implementation for one locale.
struct LocalCollation {
  CollationImplementation implementation;
  std::string locale;
};

std::ostream& operator<<(std::ostream& stream, const LocalCollation& local) {
  return stream << local.implementation.name << " for " << local.locale;
}

std::vector<LocalCollation> localCollations(const std::function<bool(const std::string&)>& includes) {
  std::vector<LocalCollation> all;
  for (const CollationImplementation& implementation : collations())
    for (const std::string& locale : implementation.locales)
      if (includes(locale)) all.push_back({implementation, locale});
  return all;
}

constexpr auto localName = [](const auto& information) {
  return information.param.implementation.name + "_" + information.param.locale;
};

class CollationTest : public InterfaceTest<LocalCollation> {
 protected:
  const std::unique_ptr<Collation> collation_ = GetParam().implementation.make(GetParam().locale);
};

using TitlesOfALocale = CollationTest;

INSTANTIATE_TEST_SUITE_P(Locales, TitlesOfALocale, testing::ValuesIn(localCollations([](const std::string& locale) {
                           return titles().contains(locale);
                         })),
                         localName);

TEST_P(TitlesOfALocale, areInFoundationsOrderPairByPair) {
  std::vector<std::u16string> ordered;
  for (const nlohmann::json& title : titles().at(GetParam().locale)) ordered.push_back(utf16(title.get<std::string>()));
  ASSERT_GT(ordered.size(), 10U);
  expectIncreasing(*collation_, ordered);
}

INSTANTIATE_TEST_SUITE_P(English, CollationTest,
                         testing::ValuesIn(localCollations([](const std::string& locale) { return locale == "en"; })),
                         localName);

TEST_P(CollationTest, ordersLettersBeforeCase) {
  expectIncreasing(*collation_, {u"a", u"A", u"apple", u"Apple", u"b", u"B"});
}

TEST_P(CollationTest, treatsOnlyIdenticalTextAsEqual) {
  EXPECT_EQ(collation_->localizedStandardCompare(u"", u""), std::strong_ordering::equal);
  EXPECT_EQ(collation_->localizedStandardCompare(u"Item 2", u"Item 2"), std::strong_ordering::equal);
  EXPECT_NE(collation_->localizedStandardCompare(u"\u00E9", u"e\u0301"), std::strong_ordering::equal);
  EXPECT_NE(collation_->localizedStandardCompare(u"ab", u"a\u00ADb"), std::strong_ordering::equal);
  const std::u16string_view withNull(u"a\0", 2);
  EXPECT_NE(collation_->localizedStandardCompare(u"a", withNull), std::strong_ordering::equal);
}

TEST_P(CollationTest, comparesNumbersOfAnyLength) {
  const std::u16string nines(250, u'9');
  expectIncreasing(*collation_, {u"1", nines.substr(1), nines, u"1" + std::u16string(250, u'0')});
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

using OrderOfAllTexts = CollationTest;

INSTANTIATE_TEST_SUITE_P(Locales, OrderOfAllTexts,
                         testing::ValuesIn(localCollations([](const std::string&) { return true; })), localName);

TEST_P(OrderOfAllTexts, isStrictAndTotal) {
  std::mt19937 random(20260926);  // NOLINT(cert-msc32-c,cert-msc51-cpp): the same texts every time
  for (int round = 0; round < 20; ++round) {
    std::vector<std::u16string> texts = randomTexts(150, random);
    std::sort(texts.begin(), texts.end());
    texts.erase(std::unique(texts.begin(), texts.end()), texts.end());
    std::stable_sort(texts.begin(), texts.end(), [&](const std::u16string& a, const std::u16string& b) {
      return std::is_lt(collation_->localizedStandardCompare(a, b));
    });
    // Every pair agrees with the positions in one sequence, so the order is antisymmetric, transitive and total.
    expectIncreasing(*collation_, texts);
    if (HasFailure()) break;
  }
}

}  // namespace
