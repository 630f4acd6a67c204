// Temporary files that killed processes have left.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cstdio>
#include <filesystem>
#include <string>
#include <vector>

#include "platform/posix/durable_files.h"
#include "tests/support/child_process.h"
#include "tests/support/file_outcomes.h"
#include "tests/support/scratch_folder.h"

namespace {

using testing::ElementsAre;
using testing::SizeIs;

// Returns the name that a temporary file with this file's inode number has.
std::string temporaryNameOf(const std::string& path) {
  struct stat status {};
  EXPECT_EQ(stat(path.c_str(), &status), 0) << path;
  std::array<char, 32> inode{};
  EXPECT_GT(std::snprintf(inode.data(), inode.size(), "-%lx", static_cast<unsigned long>(status.st_ino)), 0);
  return ".quillery-temporary-0123456789abcdef0123456789abcdef" + std::string(inode.data());
}

class AbandonedFiles : public testing::Test {
 protected:
  void SetUp() override {
    makeFile(file_, "old");
    makeFile(backup_, "backup");
  }

  // Creates a file like that of a process killed before it renames it. Returns its name.
  std::string abandon() {
    const std::string path = scratch_.path("abandoned");
    makeFile(path, "a whole file");
    return moveTo(path, temporaryNameOf(path));
  }
  std::string moveTo(const std::string& path, const std::string& name) {
    std::filesystem::rename(path, scratch_.path(name));
    return name;
  }
  std::vector<std::string> remaining() {
    removeFilesAbandonedBeside(file_, {backup_});
    return namesIn(scratch_.path());
  }

  static std::string writeOutcome(const std::string& path, const std::string& content) {
    return outcomeOf([&] { replaceFile(path, Bytes(std::string(content)), modeOfNewFiles()); });
  }

  ScratchFolder scratch_;
  const std::string file_ = scratch_.path("Bookmarks.plist");
  const std::string backup_ = scratch_.path("backup");
};

TEST_F(AbandonedFiles, areRemovedBesideAFile) {
  abandon();
  EXPECT_THAT(remaining(), ElementsAre("Bookmarks.plist", "backup"));
}

TEST_F(AbandonedFiles, areRemovedIfTheyGotNoFurtherThanTheirFirstName) {
  makeFile(scratch_.path(".quillery-temporary-aBc123"), "");
  EXPECT_THAT(remaining(), ElementsAre("Bookmarks.plist", "backup"));
}

TEST_F(AbandonedFiles, areRemovedBesideTheTargetOfALink) {
  const ScratchFolder other;
  std::filesystem::create_symlink(file_, other.path("link"));
  abandon();
  removeFilesAbandonedBeside(other.path("link"), {});
  EXPECT_THAT(namesIn(scratch_.path()), ElementsAre("Bookmarks.plist", "backup"));
}

TEST_F(AbandonedFiles, areRemovedFromAFolder) {
  abandon();
  removeFilesAbandonedBeside(scratch_.path() + "/", {});
  EXPECT_THAT(namesIn(scratch_.path()), ElementsAre("Bookmarks.plist", "backup"));
  removeFilesAbandonedBeside(scratch_.path("missing") + "/", {});
}

TEST_F(AbandonedFiles, areRemovedWhenAnyFileIsReplaced) {
  abandon();
  EXPECT_EQ(writeOutcome(file_, "new"), "done");
  EXPECT_THAT(namesIn(scratch_.path()), ElementsAre("Bookmarks.plist", "backup"));
}

TEST_F(AbandonedFiles, doNotIncludeFilesInUse) {
  const std::string sorted = scratch_.path(moveTo(file_, temporaryNameOf(file_)));
  const std::string restored = scratch_.path(moveTo(backup_, temporaryNameOf(backup_)));
  removeFilesAbandonedBeside(sorted, {restored});
  EXPECT_THAT(namesIn(scratch_.path()), SizeIs(2));
  EXPECT_EQ(writeOutcome(sorted, "new"), "done");
  EXPECT_EQ(contentOf(sorted), "new");
}

TEST_F(AbandonedFiles, doNotIncludeTheTargetsOfLinks) {
  const ScratchFolder links;
  std::filesystem::create_symlink(scratch_.path(moveTo(file_, temporaryNameOf(file_))), links.path("file"));
  std::filesystem::create_symlink(scratch_.path(moveTo(backup_, temporaryNameOf(backup_))), links.path("backup"));
  removeFilesAbandonedBeside(links.path("file"), {links.path("backup")});
  EXPECT_THAT(namesIn(scratch_.path()), SizeIs(2));
}

TEST_F(AbandonedFiles, doNotIncludeFilesOfOtherNames) {
  const std::string name = ".quillery-temporary-0123456789abcdef0123456789abcdef";
  for (const std::string& other :
       {std::string(".quillery-backup"), std::string(".quillery-master"), std::string(".quillery-config"),
        std::string(".quillery-temporary-"), std::string(".quillery-temporary-backup"),
        std::string(".quillery-temporary-backup-of-Bookmarks"), name, name + "-", name + "-0", name + "-1",
        name + "-ffffffffffffffff"})
    makeFile(scratch_.path(other), "the user's");
  std::filesystem::copy_file(scratch_.path(abandon()), scratch_.path(name + "-2"));
  const std::size_t before = namesIn(scratch_.path()).size();
  EXPECT_THAT(remaining(), SizeIs(before - 1)) << "only the abandoned file is removed, not its copy";
}

TEST_F(AbandonedFiles, doNotIncludeAnythingButFilesOfOneLink) {
  std::filesystem::create_hard_link(file_, scratch_.path(temporaryNameOf(file_)));
  std::filesystem::create_symlink(backup_, scratch_.path(temporaryNameOf(backup_)));
  std::filesystem::create_directory(scratch_.path("folder"));
  moveTo(scratch_.path("folder"), temporaryNameOf(scratch_.path("folder")));
  ASSERT_EQ(mkfifo(scratch_.path(".quillery-temporary-a_pipe").c_str(), 0600), 0);
  const std::vector<std::string> before = namesIn(scratch_.path());
  EXPECT_EQ(remaining(), before);
}

TEST_F(AbandonedFiles, doNotIncludeLockedFiles) {
  const std::string path = scratch_.path(abandon());
  const int file = open(path.c_str(), O_RDONLY | O_CLOEXEC);
  ASSERT_EQ(flock(file, LOCK_SH), 0);
  EXPECT_THAT(remaining(), SizeIs(3));
  close(file);
  EXPECT_THAT(remaining(), SizeIs(2));
}

TEST_F(AbandonedFiles, doNotIncludeOtherUsersFiles) {
  if (geteuid() != 0) GTEST_SKIP() << "only the superuser can create another user's file";
  ASSERT_EQ(chown(scratch_.path(abandon()).c_str(), unprivilegedUser, unprivilegedUser), 0);
  EXPECT_THAT(remaining(), SizeIs(3));
}

}  // namespace
