// Lets death tests start the test program anew: Foundation and its threads do not survive a fork without exec.
#include <gtest/gtest.h>

namespace {

class ThreadsafeDeathTests : public testing::Environment {
 public:
  void SetUp() override { GTEST_FLAG_SET(death_test_style, "threadsafe"); }
};

// GoogleTest deletes it.
[[maybe_unused]] testing::Environment* const threadsafe = testing::AddGlobalTestEnvironment(new ThreadsafeDeathTests);

}  // namespace
