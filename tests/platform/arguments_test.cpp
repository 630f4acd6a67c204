// Command-line arguments.
#include "platform/arguments.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

TEST(Arguments, containAnEqualArgumentAtAnyPosition) {
  EXPECT_TRUE(contains({"--self-test"}, "--self-test"));
  EXPECT_TRUE(contains({"--login", "--self-test"}, "--self-test"));
  EXPECT_TRUE(contains({"--self-test", "--login"}, "--self-test"));
}

TEST(Arguments, doNotContainArgumentsThatOnlyLookSimilar) {
  for (const char* argument : {"--self-testing", "--self-test=1", "--self-test ", "-self-test", "self-test",
                               "--self-tes", "---self-test", "--Self-Test", ""})
    EXPECT_FALSE(contains({argument}, "--self-test")) << argument;
  EXPECT_FALSE(contains({}, "--self-test"));
  EXPECT_FALSE(contains({"--self", "-test"}, "--self-test"));
}

TEST(Arguments, leaveOutTheProgramsName) {
  std::vector<std::string> words = {"--self-test", "sort", ""};
  std::vector<char*> values = {words[0].data(), words[1].data(), words[2].data()};
  EXPECT_THAT(argumentsOf(3, values.data()), ElementsAre("sort", ""));
  EXPECT_THAT(argumentsOf(1, values.data()), IsEmpty());
  EXPECT_THAT(argumentsOf(0, values.data()), IsEmpty());
}

}  // namespace
