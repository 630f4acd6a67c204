#include "platform/linux/installed_bundle.h"

#include <gtest/gtest.h>

#include <filesystem>

namespace {

TEST(InstalledBundle, isTheFolderThatHoldsTheBinFolder) {
  EXPECT_EQ(installationFolder("/usr/bin/quillery"), "/usr");
  EXPECT_EQ(installationFolder("/home/ann/.local/bin/quillery"), "/home/ann/.local");
  EXPECT_EQ(installationFolder("/bin/quillery"), "/");
}

TEST(InstalledBundle, isElseTheExecutablesOwnFolder) {
  EXPECT_EQ(installationFolder("/home/ann/quillery/build/quillery"), "/home/ann/quillery/build");
  EXPECT_EQ(installationFolder("/opt/sbin/quillery"), "/opt/sbin");
  EXPECT_EQ(installationFolder("/quillery"), "/");
}

TEST(InstalledBundle, isThatOfTheRunningExecutable) {
  EXPECT_EQ(InstalledBundle().path(), installationFolder(std::filesystem::canonical("/proc/self/exe").string()));
}

}  // namespace
