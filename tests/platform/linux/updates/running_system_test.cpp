#include "platform/linux/updates/running_system.h"

#include <gtest/gtest.h>

namespace {

TEST(RunningSystemTest, readsTheVersionOfDebian) {
  const RunningSystem system =
      systemOf("PRETTY_NAME=\"Debian GNU/Linux 12 (bookworm)\"\nVERSION_ID=\"12\"\nID=debian\n");
  EXPECT_TRUE(system.isLikeDebian);
  EXPECT_EQ(system.version, "12");
}

TEST(RunningSystemTest, knowsNoVersionOfSystemsLikeDebian) {
  for (const char* text : {"ID=ubuntu\nID_LIKE=debian\nVERSION_ID=\"24.04\"\n",
                           "ID=mint\nID_LIKE='ubuntu debian'\nVERSION_ID=21\n", "ID=debian\n"}) {
    EXPECT_TRUE(systemOf(text).isLikeDebian) << text;
    EXPECT_EQ(systemOf(text).version, "") << text;
  }
}

TEST(RunningSystemTest, takesOtherSystemsForOthers) {
  for (const char* text : {"", "ID=fedora\nVERSION_ID=40\n", "no assignment", "ID=\"\nID_LIKE=debianish\n", "=\n"})
    EXPECT_FALSE(systemOf(text).isLikeDebian) << text;
}

TEST(RunningSystemTest, knowsTheProcessorOfThisProgram) { EXPECT_FALSE(runningSystem().processor.empty()); }

}  // namespace
