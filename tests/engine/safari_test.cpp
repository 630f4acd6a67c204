// The probe for a running Safari.
#include "engine/safari.h"

#include <gtest/gtest.h>

#include "tests/support/virtual_machine.h"

namespace {

class SafariTest : public testing::Test {
 protected:
  VirtualMachine machine_;
};

TEST_F(SafariTest, isNotRunningWithoutAProcess) { EXPECT_FALSE(safariRunning()); }

TEST_F(SafariTest, isRunningWithOneProcessOrTwo) {
  machine_.applications.start("com.apple.Safari");
  EXPECT_TRUE(safariRunning());
  machine_.applications.start("com.apple.Safari");
  EXPECT_TRUE(safariRunning());
  machine_.applications.end("com.apple.Safari");
  EXPECT_FALSE(safariRunning());
}

TEST_F(SafariTest, isUnknownIfTheSystemDoesNotReply) {
  EXPECT_EQ(safariState(), SafariState::closed);
  machine_.applications.start("com.apple.Safari");
  EXPECT_EQ(safariState(), SafariState::running);
  machine_.applications.setUnresponsive(true);
  EXPECT_EQ(safariState(), SafariState::unknown);
  EXPECT_THROW(runningSafaris(), SafariUnknown);
  EXPECT_THROW(safariRunning(), SafariUnknown);
}

TEST_F(SafariTest, cannotBeLookedForOutsideASession) {
  EXPECT_TRUE(canLookForSafari());
  machine_.applications.leaveSession();
  EXPECT_FALSE(canLookForSafari());
  EXPECT_EQ(safariState(), SafariState::closed);
}

TEST_F(SafariTest, isFoundByItsExactIdentifierOnly) {
  machine_.applications.start("com.apple.SafariTechnologyPreview");
  machine_.applications.start("com.apple.safari");
  machine_.applications.start("com.apple");
  EXPECT_FALSE(safariRunning());
}

}  // namespace
