#include "platform/linux/session/desktop_entries.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <optional>
#include <string>

#include "tests/support/environment_scope.h"
#include "tests/support/scratch_folder.h"

namespace {

constexpr const char* safari = "com.apple.Safari";
const std::string application = "[Desktop Entry]\nType=Application\nName=An Application\nExec=true\n";

class DesktopEntriesTest : public testing::Test {
 protected:
  // Makes a desktop entry in one of the test's data folders and returns its path.
  std::string make(const std::string& folder, const std::string& name, const std::string& content = application) {
    const std::filesystem::path path = scratch_.path(folder + "/applications/" + name);
    std::filesystem::create_directories(path.parent_path());
    makeFile(path, content);
    return path;
  }

  ScratchFolder scratch_;
  EnvironmentScope userFolder_{"XDG_DATA_HOME", scratch_.path("user")};
  EnvironmentScope systemFolders_{"XDG_DATA_DIRS", scratch_.path("first") + ":" + scratch_.path("second/")};
};

TEST_F(DesktopEntriesTest, anApplicationWithoutAnEntryIsAbsent) {
  EXPECT_EQ(findDesktopEntry(safari), std::nullopt);
  make("user", "com.apple.Safari.Extra.desktop");
  make("user", "com.apple.Safari");
  make("user", "com.apple.safari.desktop");
  EXPECT_EQ(findDesktopEntry(safari), std::nullopt);
}

TEST_F(DesktopEntriesTest, theUsersEntryComesBeforeTheSystems) {
  const std::string second = make("second", "com.apple.Safari.desktop");
  EXPECT_EQ(findDesktopEntry(safari), second);
  const std::string first = make("first", "com.apple.Safari.desktop");
  EXPECT_EQ(findDesktopEntry(safari), first);
  const std::string user = make("user", "com.apple.Safari.desktop");
  EXPECT_EQ(findDesktopEntry(safari), user);
}

TEST_F(DesktopEntriesTest, theUsersFolderIsInTheHomeFolderByDefault) {
  const EnvironmentScope home("HOME", scratch_.path("home"));
  const std::string path = make("home/.local/share", "com.apple.Safari.desktop");
  for (const std::optional<std::string>& nothing : {std::optional<std::string>(), std::optional<std::string>("")}) {
    userFolder_.set(nothing);
    EXPECT_EQ(findDesktopEntry(safari), path);
  }
}

TEST_F(DesktopEntriesTest, relativeFoldersAreIgnored) {
  const std::string path = make("second", "com.apple.Safari.desktop");
  make("first", "com.apple.Safari.desktop");
  const std::filesystem::path before = std::filesystem::current_path();
  std::filesystem::current_path(scratch_.path());
  userFolder_.set("first");
  systemFolders_.set("first:./first:" + scratch_.path("second"));
  EXPECT_EQ(findDesktopEntry(safari), path);
  std::filesystem::current_path(before);
}

TEST_F(DesktopEntriesTest, aHiddenEntryHidesLaterOnes) {
  make("second", "com.apple.Safari.desktop");
  const std::string path = make("first", "com.apple.Safari.desktop", application + "Hidden=true\n");
  EXPECT_EQ(findDesktopEntry(safari), std::nullopt);
  makeFile(path, application + "Hidden=false\nNoDisplay=true\n");
  EXPECT_EQ(findDesktopEntry(safari), path);
}

TEST_F(DesktopEntriesTest, anEntryOfAnotherTypeIsNoApplication) {
  make("first", "com.apple.Safari.desktop", "[Desktop Entry]\nType=Directory\n");
  EXPECT_EQ(findDesktopEntry(safari), std::nullopt);
  std::filesystem::create_directories(scratch_.path("user/applications/com.apple.Mail.desktop"));
  EXPECT_EQ(findDesktopEntry("com.apple.Mail"), std::nullopt);
}

TEST_F(DesktopEntriesTest, anEntryWithoutItsProgramIsAbsent) {
  const auto tryExec = [&](const std::string& program) {
    make("first", "com.apple.Safari.desktop", application + "TryExec=" + program + "\n");
    return findDesktopEntry(safari).has_value();
  };
  makeFile(scratch_.path("program"), "#!/bin/sh\n");
  EXPECT_FALSE(tryExec(scratch_.path("program"))) << "it is not executable";
  chmod(scratch_.path("program").c_str(), 0755);
  EXPECT_TRUE(tryExec(scratch_.path("program")));
  EXPECT_FALSE(tryExec("program"));
  EXPECT_FALSE(tryExec(scratch_.path())) << "it is a folder";
  const EnvironmentScope programs("PATH", "/nonexistent::" + scratch_.path());
  EXPECT_TRUE(tryExec("program"));
  EXPECT_FALSE(tryExec(""));
}

TEST_F(DesktopEntriesTest, searchesTheUsualFoldersIfPathIsNotSet) {
  make("first", "com.apple.Safari.desktop", application + "TryExec=sh\n");
  EnvironmentScope programs("PATH", std::nullopt);
  EXPECT_TRUE(findDesktopEntry(safari));
  programs.set("");
  EXPECT_FALSE(findDesktopEntry(safari));
}

TEST_F(DesktopEntriesTest, normalizesTheSystemsFolders) {
  const std::string path = make("second", "com.apple.Safari.desktop");
  systemFolders_.set(scratch_.path("missing/../second//./"));
  EXPECT_EQ(findDesktopEntry(safari), path);
}

TEST_F(DesktopEntriesTest, aHyphenMayStandForAFolder) {
  const std::string below = make("second", "one/two-three.desktop");
  EXPECT_EQ(findDesktopEntry("one-two-three"), below);
  const std::string deeper = make("first", "one/two/three.desktop");
  EXPECT_EQ(findDesktopEntry("one-two-three"), deeper);
  const std::string flat = make("first", "one-two-three.desktop");
  EXPECT_EQ(findDesktopEntry("one-two-three"), flat);
}

TEST_F(DesktopEntriesTest, findsNothingForAnInvalidIdentifier) {
  make("first", ".desktop");
  make("first", "below/entry.desktop");
  make("first/applications", "../entry.desktop");
  for (const char* identifier : {"", "below/entry", "../entry", "/"})
    EXPECT_EQ(findDesktopEntry(identifier), std::nullopt) << identifier;
  EXPECT_EQ(findDesktopEntry(std::string("below-entry\0x", 13)), std::nullopt);
}

TEST_F(DesktopEntriesTest, anEntryMayBeASymlink) {
  make("elsewhere", "entry.desktop");
  std::filesystem::create_directories(scratch_.path("user/applications"));
  std::filesystem::create_symlink(scratch_.path("elsewhere/applications/entry.desktop"),
                                  scratch_.path("user/applications/com.apple.Safari.desktop"));
  EXPECT_EQ(findDesktopEntry(safari), scratch_.path("user/applications/com.apple.Safari.desktop"));
}

}  // namespace
