#include "platform/linux/updates/version.h"

#include <gtest/gtest.h>

#include <array>

namespace {

// Each version is older than the next.
constexpr std::array increasing = {"",      "0.9",   "1.0b",   "1.0",  "1.0.1", "1.4.8a", "1.4.8b",
                                   "1.4.8", "1.4.9", "1.4.10", "1.10", "2.0b3", "2.0",    "10"};

TEST(VersionTest, ordersNumbersByValueAndWordsBelowThem) {
  for (std::size_t older = 0; older < increasing.size(); ++older)
    for (std::size_t newer = 0; newer < increasing.size(); ++newer) {
      EXPECT_EQ(Version(increasing[older]) < Version(increasing[newer]), older < newer)
          << increasing[older] << ", " << increasing[newer];
      EXPECT_EQ(Version(increasing[older]) == Version(increasing[newer]), older == newer);
    }
}

TEST(VersionTest, takesMissingNumbersForZero) {
  EXPECT_EQ(Version("2.0"), Version("2.0.0"));
  EXPECT_EQ(Version("2"), Version("2.0.0"));
  EXPECT_LT(Version("2.0"), Version("2.0.0.1"));
  EXPECT_EQ(Version("1.0b2"), Version("1.0.0b2"));
  EXPECT_EQ(Version("1.02"), Version("1.2"));
}

TEST(VersionTest, ignoresWhatFollowsADash) {
  EXPECT_EQ(Version("1.2-beta"), Version("1.2"));
  EXPECT_EQ(Version("1.2-3"), Version("1.2-4"));
}

TEST(VersionTest, comparesNumbersOfAnyLength) {
  EXPECT_LT(Version("99999999999999999999998"), Version("99999999999999999999999"));
  EXPECT_LT(Version("99999999999999999999999"), Version("100000000000000000000000"));
  EXPECT_LT(Version("20260101"), Version("20260102"));
}

TEST(VersionTest, takesEverySeparatorForEqual) {
  EXPECT_EQ(Version("1 2"), Version("1_2"));
  EXPECT_GT(Version("12"), Version("1.2"));
  EXPECT_GT(Version("1.2"), Version("1.b"));
  EXPECT_LT(Version("1.b"), Version("1.2"));
}

}  // namespace
