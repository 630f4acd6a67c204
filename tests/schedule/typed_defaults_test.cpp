// Settings of the wrong type, converted by the rules of Foundation.
#include "schedule/typed_defaults.h"

#include <gtest/gtest.h>

#include <limits>
#include <ostream>
#include <string>
#include <vector>

#include "tests/support/virtual_machine.h"

namespace {

struct Row {
  std::string name;
  std::optional<PlistValue> stored;
  bool boolean;
  int integer;
};
void PrintTo(const Row& row, std::ostream* stream) { *stream << row.name; }  // NOLINT: GoogleTest's name

class TypedDefaults : public testing::TestWithParam<Row> {};

TEST_P(TypedDefaults, convertAnyStoredTypeToBooleanAndInteger) {
  VirtualMachine machine;
  if (GetParam().stored) machine.defaults.put("key", *GetParam().stored);
  EXPECT_EQ(booleanForKey("key"), GetParam().boolean);
  EXPECT_EQ(integerForKey("key"), GetParam().integer);
}

constexpr int most = std::numeric_limits<int>::max();
constexpr int least = std::numeric_limits<int>::min();

const std::vector<Row> rows = {
    {"absent", std::nullopt, false, 0},
    {"array", PlistValue::array({1}), false, 0},
    {"dictionary", PlistValue::dictionary({{u"1", 1}}), false, 0},
    {"date", PlistDate{1}, false, 0},
    {"data", Bytes(std::string("1")), false, 0},
    {"YES", u"YES", true, 0},
    {"yes", u"yes", true, 0},
    {"true", u"true", true, 0},
    {"TRUE", u"TRUE", true, 0},
    {"one", u"1", true, 1},
    {"seven", u"7", true, 7},
    {"sevenAndLetters", u"7abc", true, 7},
    {"spaceAndSeven", u" 7", true, 7},
    {"sevenPointNine", u"7.9", true, 7},
    {"zero", u"0", false, 0},
    {"NO", u"NO", false, 0},
    {"letters", u"abc", false, 0},
    {"empty", u"", false, 0},
    {"onlySpace", u" \n\t", false, 0},
    {"zeroesAndSeven", u"007", true, 7},
    {"plusSeven", u"+7", true, 7},
    {"minusSeven", u"-7", true, -7},
    {"minusZero", u"-0", false, 0},
    {"twoSigns", u"+-7", false, 0},
    {"onlyASign", u"-", false, 0},
    {"minusAndYes", u"-yes", true, 0},
    {"textBeyondAllNumbers", u"99999999999999999999", true, most},
    {"textBelowAllNumbers", u"-99999999999999999999", true, least},
    {"integerSeven", 7, true, 7},
    {"integerZero", 0, false, 0},
    {"integerMinusOne", -1, true, -1},
    {"integerBeyondAnInt", 1LL << 40, true, most},
    {"integerBelowAnInt", -(1LL << 40), true, least},
    {"integerOf64Bits", std::numeric_limits<std::uint64_t>::max(), true, most},
    {"realSevenPointNine", 7.9, true, 7},
    {"realMinusSevenPointNine", -7.9, true, -7},
    {"realPointFour", 0.4, true, 0},
    {"realZero", 0.0, false, 0},
    {"realMinusZero", -0.0, false, 0},
    {"realInfinity", std::numeric_limits<double>::infinity(), true, most},
    {"realMinusInfinity", -std::numeric_limits<double>::infinity(), true, least},
    {"realNotANumber", std::numeric_limits<double>::quiet_NaN(), true, 0},
    {"booleanTrue", true, true, 1},
    {"booleanFalse", false, false, 0},
};

INSTANTIATE_TEST_SUITE_P(Stored, TypedDefaults, testing::ValuesIn(rows),
                         [](const auto& row) { return row.param.name; });

TEST(TypedDefaultsReading, happensEachTimeAndWritesNothing) {
  VirtualMachine machine;
  EXPECT_FALSE(booleanForKey("key"));
  machine.defaults.put("key", 5);
  EXPECT_TRUE(booleanForKey("key"));
  EXPECT_EQ(integerForKey("key"), 5);
  EXPECT_TRUE(machine.journal.entries().empty());
}

}  // namespace
