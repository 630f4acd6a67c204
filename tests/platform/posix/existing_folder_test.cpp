#include "platform/posix/existing_folder.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "tests/support/scratch_folder.h"

namespace {

TEST(ExistingFolder, isTheNearestOneAboveAMissingOne) {
  const ScratchFolder scratch;
  const std::string folder = scratch.path("home");
  EXPECT_EQ(existingFolder(folder + "/Library/Safari"), scratch.path());
  std::filesystem::create_directories(folder + "/Library");
  EXPECT_EQ(existingFolder(folder + "/Library/Safari"), folder + "/Library");
  makeFile(folder + "/Library/Safari", "in the way");
  EXPECT_EQ(existingFolder(folder + "/Library/Safari"), folder + "/Library");
  EXPECT_EQ(existingFolder(folder + "/Library"), folder + "/Library");
  EXPECT_EQ(existingFolder("/"), "/");
  EXPECT_EQ(existingFolder("/nowhere/at/all"), "/");
}

}  // namespace
