#include "platform/linux/installed_bundle.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "platform/product.h"

namespace {

TEST(InstalledBundle, isTheParentOfTheBinFolder) {
  EXPECT_EQ(installationFolder("/usr/bin/quillery"), "/usr");
  EXPECT_EQ(installationFolder("/home/ann/.local/bin/quillery"), "/home/ann/.local");
  EXPECT_EQ(installationFolder("/bin/quillery"), "/");
}

TEST(InstalledBundle, isTheExecutablesFolderIfThatIsNotBin) {
  EXPECT_EQ(installationFolder("/home/ann/quillery/build/quillery"), "/home/ann/quillery/build");
  EXPECT_EQ(installationFolder("/opt/sbin/quillery"), "/opt/sbin");
  EXPECT_EQ(installationFolder("/quillery"), "/");
}

TEST(InstalledBundle, belongsToTheRunningExecutable) {
  EXPECT_EQ(InstalledBundle().path(), installationFolder(std::filesystem::canonical("/proc/self/exe").string()));
}

TEST(InstalledBundle, knowsTheRunningExecutable) {
  EXPECT_EQ(InstalledBundle().executablePath(), std::filesystem::canonical("/proc/self/exe").string());
}

TEST(InstalledBundle, hasItsIconInTheIconTheme) {
  EXPECT_EQ(InstalledBundle().iconPath(),
            InstalledBundle().path() + "/share/icons/hicolor/scalable/apps/com.fenwarde.quillery.svg");
}

TEST(InstalledBundle, knowsOnlyTheVersion) {
  InstalledBundle bundle;
  EXPECT_EQ(bundle.information("CFBundleShortVersionString"), std::string(product::version));
  EXPECT_EQ(bundle.information("CFBundleVersion"), std::string(product::version));
  for (const char* key : {"CFBundleName", "CFBundleIdentifier", "cfbundleversion", ""})
    EXPECT_EQ(bundle.information(key), std::nullopt) << key;
}

TEST(InstalledBundle, keepsHelperProgramsInLibexec) {
  EXPECT_EQ(helperProgram("/usr/bin/quillery", "helper"), "/usr/libexec/quillery/helper");
  EXPECT_EQ(helperProgram("/home/ann/build/quillery", "helper"), "/home/ann/build/helper");
}

}  // namespace
