// Whether Safari is running.
#include "engine/safari.h"

#include <gtest/gtest.h>

#include "tests/support/virtual_machine.h"

namespace {

class SafariTest : public testing::Test {
 protected:
  VirtualMachine machine_;
};

TEST_F(SafariTest, safariIsNotRunningWithoutAProcess) { EXPECT_FALSE(safariRunning()); }

TEST_F(SafariTest, safariIsRunningWithOneProcessOrTwo) {
  machine_.applications.start("com.apple.Safari");
  EXPECT_TRUE(safariRunning());
  machine_.applications.start("com.apple.Safari");
  EXPECT_TRUE(safariRunning());
  machine_.applications.end("com.apple.Safari");
  EXPECT_FALSE(safariRunning());
}

TEST_F(SafariTest, safariIsKnownByItsIdentifierOnly) {
  machine_.applications.start("com.apple.SafariTechnologyPreview");
  machine_.applications.start("com.apple.safari");
  machine_.applications.start("com.apple");
  EXPECT_FALSE(safariRunning());
}

}  // namespace
