// Changes that another process makes while a file is being replaced.
#include "platform/posix/durable_files.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <functional>
#include <string>

#include "tests/platform/linux/scratch_folder.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class ReplaceFileIf : public testing::Test {
 protected:
  void SetUp() override { makeFile(file_, "old"); }
  // Replaces the file and calls `interfere` during the check of its content, which then succeeds.
  bool replaceWhile(const std::function<void()>& interfere) {
    const auto check = [&] {
      interfere();
      return true;
    };
    return replaceFileIf(file_, Bytes(std::string("new")), check, Flush::never);
  }
  // Replaces the file by another one with the same content.
  void renameOver() {
    makeFile(other_, "old");
    std::filesystem::rename(other_, file_);
  }

  ScratchFolder scratch_;
  const std::string file_ = scratch_.path("file");
  const std::string other_ = scratch_.path("other");
};

struct stat statusOf(const std::string& path) {
  struct stat status {};
  EXPECT_EQ(stat(path.c_str(), &status), 0) << path;
  return status;
}

bool haveSameChangeTime(const struct stat& one, const struct stat& other) {
  return one.st_ctim.tv_sec == other.st_ctim.tv_sec && one.st_ctim.tv_nsec == other.st_ctim.tv_nsec;
}

TEST_F(ReplaceFileIf, replacesAFileThatNobodyChanges) {
  EXPECT_TRUE(replaceWhile([] {}));
  EXPECT_EQ(contentOf(file_), "new");
}

TEST_F(ReplaceFileIf, leavesAFileWhoseCheckFails) {
  EXPECT_FALSE(replaceFileIf(
      file_, Bytes(std::string("new")), [] { return false; }, Flush::never));
  EXPECT_EQ(contentOf(file_), "old");
}

TEST_F(ReplaceFileIf, noticesAFileThatIsRenamedOverTheCheckedOne) {
  EXPECT_FALSE(replaceWhile([&] { renameOver(); }));
  EXPECT_EQ(contentOf(file_), "old");
  EXPECT_THAT(namesIn(scratch_.path()), ElementsAre("file"));
}

TEST_F(ReplaceFileIf, noticesAChangeInPlace) {
  EXPECT_FALSE(replaceWhile([&] {
    const struct stat before = statusOf(file_);
    while (haveSameChangeTime(before, statusOf(file_))) makeFile(file_, "changed");
  }));
  EXPECT_EQ(contentOf(file_), "changed");
}

TEST_F(ReplaceFileIf, doesNotRecreateARemovedFile) {
  EXPECT_FALSE(replaceWhile([&] { std::filesystem::remove(file_); }));
  EXPECT_THAT(namesIn(scratch_.path()), IsEmpty());
}

// Some file systems advance their clock only every few milliseconds, so one property alone is not enough.
TEST(IsSameFile, comparesDeviceInodeAndChangeTime) {
  struct stat file {};
  file.st_dev = 1;
  file.st_ino = 2;
  file.st_ctim = {3, 4};
  EXPECT_TRUE(isSameFile(file, file));
  struct stat other = file;
  other.st_dev = 5;
  EXPECT_FALSE(isSameFile(file, other));
  other = file;
  other.st_ino = 5;
  EXPECT_FALSE(isSameFile(file, other));
  other = file;
  other.st_ctim = {3, 5};
  EXPECT_FALSE(isSameFile(file, other));
  other.st_ctim = {5, 4};
  EXPECT_FALSE(isSameFile(file, other));
}

}  // namespace
