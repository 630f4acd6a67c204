// The list of differences itself.
#include "tests/interfaces/differences.h"

#include <gtest/gtest.h>

#include <set>
#include <string>

namespace {

// Returns a test's name up to its parameter, which may be of another system.
std::string withoutParameter(const std::string& name) { return name.substr(0, name.find('/')); }

std::set<std::string> namesOfTests() {
  std::set<std::string> names;
  const testing::UnitTest& all = *testing::UnitTest::GetInstance();
  for (int suite = 0; suite < all.total_test_suite_count(); ++suite)
    for (int test = 0; test < all.GetTestSuite(suite)->total_test_count(); ++test) {
      const std::string suiteName = all.GetTestSuite(suite)->name();
      names.insert(suiteName.substr(suiteName.find('/') + 1) + "." +
                   withoutParameter(all.GetTestSuite(suite)->GetTestInfo(test)->name()));
    }
  return names;
}

TEST(Differences, nameTestsThatExistAndAReason) {
  const std::set<std::string> names = namesOfTests();
  for (const Difference& difference : differences()) {
    EXPECT_TRUE(names.contains(withoutParameter(std::string(difference.test)))) << difference.test;
    EXPECT_FALSE(difference.failure.empty()) << difference.test;
    EXPECT_FALSE(difference.reason.empty()) << difference.test;
  }
}

TEST(Differences, nameTestsInFull) {
  EXPECT_EQ(nameOfRunningTest(), "Differences.nameTestsInFull");
  for (const Difference& difference : differences()) EXPECT_EQ(differenceOf(std::string(difference.test)), &difference);
  EXPECT_EQ(differenceOf(nameOfRunningTest()), nullptr);
}

TEST(ListedFailure, hidesAFailureThatIsAsListed) {
  ListedFailure listed({"A.test/Of", "the listed words", "that is on purpose"});
  ADD_FAILURE() << "with the listed words";
  EXPECT_EQ(listed.problem(), "");
}

TEST(ListedFailure, reportsATestThatPasses) {
  ListedFailure listed({"A.test/Of", "the listed words", "it is so on purpose"});
  EXPECT_EQ(listed.problem(), "this test passes, but is listed as a difference because it is so on purpose");
}

TEST(ListedFailure, reportsAnotherFailure) {
  ListedFailure listed({"A.test/Of", "the listed words", "it is so on purpose"});
  ADD_FAILURE() << "other words";
  EXPECT_EQ(listed.problem().find("this test fails, but not with \"the listed words\" as listed: "), 0U);
}

}  // namespace
