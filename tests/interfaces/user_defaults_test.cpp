// The settings: what every implementation promises.
#include "platform/user_defaults.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "tests/interfaces/differences.h"
#include "tests/interfaces/implementations.h"

namespace {

class UserDefaultsTest : public InterfaceTest<Implementation<UserDefaultsSubject>> {
 protected:
  const std::unique_ptr<UserDefaultsSubject> subject_ = GetParam().make();
  UserDefaults& defaults_ = subject_->defaults();
};

INSTANTIATE_TEST_SUITE_P(Implementations, UserDefaultsTest, testing::ValuesIn(userDefaults()), implementationName);

TEST_P(UserDefaultsTest, haveNoValueForAnUnknownKey) { EXPECT_EQ(defaults_.object(testKey), std::nullopt); }

TEST_P(UserDefaultsTest, returnValuesOfEveryKind) {
  const std::vector<PlistValue> values = {
      u"Lesezeichen & <Ordner> \u00FC \U0001F4D6",
      u"",
      -3,
      std::numeric_limits<std::uint64_t>::max(),
      std::numeric_limits<std::int64_t>::min(),
      0.1,
      true,
      false,
      PlistDate{700000000},
      Bytes(std::string("\0\1\xFF data", 8)),
      PlistValue::array({1, u"two", PlistValue::array({})}),
      PlistValue::dictionary({{u"inner", PlistValue::array({true, 2.5})}}),
  };
  for (const PlistValue& value : values) {
    defaults_.set(testKey, value);
    EXPECT_EQ(defaults_.object(testKey), value);
  }
}

TEST_P(UserDefaultsTest, keepEachKeyApart) {
  defaults_.set(testKey, 1);
  defaults_.set(otherTestKey, 2);
  defaults_.set(testKey, 3);
  EXPECT_EQ(defaults_.object(testKey), PlistValue(3));
  EXPECT_EQ(defaults_.object(otherTestKey), PlistValue(2));
}

TEST_P(UserDefaultsTest, storeAnArrayThatOnlyChangedItsOrder) {
  defaults_.set(testKey, PlistValue::array({1, 2, 3}));
  const PlistValue stored = *defaults_.object(testKey);
  defaults_.set(testKey, stored.rearranged({stored.at(2), stored.at(0), stored.at(1)}));
  EXPECT_EQ(defaults_.object(testKey), PlistValue::array({3, 1, 2}));
}

TEST_P(UserDefaultsTest, returnValuesThatLastWhenTheyAreReplaced) {
  defaults_.set(testKey, u"text that is longer than what a string holds in itself");
  const std::optional<PlistValue> value = defaults_.object(testKey);
  defaults_.set(testKey, 1);
  EXPECT_EQ(value, PlistValue(u"text that is longer than what a string holds in itself"));
}

TEST_P(UserDefaultsTest, keepValuesForTheNextStart) {
  defaults_.set(testKey, PlistValue::array({1, u"two"}));
  subject_->startAnew();
  EXPECT_EQ(subject_->defaults().object(testKey), PlistValue::array({1, u"two"}));
}

}  // namespace
