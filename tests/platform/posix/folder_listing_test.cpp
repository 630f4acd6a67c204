// Listing real folders.
#include "platform/posix/folder_listing.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include "tests/support/child_process.h"
#include "tests/support/file_outcomes.h"
#include "tests/support/scratch_folder.h"

namespace {

using testing::IsEmpty;

class RegularFilesIn : public testing::Test {
 protected:
  ScratchFolder scratch_;
  const std::string file_ = scratch_.path("Bookmarks.plist");
};

TEST_F(RegularFilesIn, returnsNamesSizesAndTimesOfRegularFiles) {
  makeFile(scratch_.path("one"), "12345");
  makeFile(scratch_.path(".hidden"), "");
  std::filesystem::create_directory(scratch_.path("folder"));
  makeFile(scratch_.path("folder/inner"), "");
  ASSERT_EQ(mkfifo(scratch_.path("pipe").c_str(), 0600), 0);
  const std::array<timespec, 2> times{timespec{1, 0}, timespec{1'789'977'600, 250'000'000}};
  ASSERT_EQ(utimensat(AT_FDCWD, scratch_.path("one").c_str(), times.data(), 0), 0);
  std::vector<FileEntry> files = regularFilesIn(scratch_.path());
  std::ranges::sort(files, {}, &FileEntry::name);
  ASSERT_EQ(files.size(), 2U);
  EXPECT_EQ(files[0].name, ".hidden");
  EXPECT_EQ(files[0].size, 0U);
  EXPECT_EQ(files[1].name, "one");
  EXPECT_EQ(files[1].size, 5U);
  EXPECT_EQ(files[1].modified.time_since_epoch(), std::chrono::milliseconds(1'789'977'600'250));
}

TEST_F(RegularFilesIn, returnsTimesOfEveryCentury) {
  makeFile(scratch_.path("file"), "");
  for (const std::int64_t second : {-9'223'372'037LL, 0LL, 9'223'372'036LL, 9'223'372'037LL, 14'000'000'000LL}) {
    const std::array<timespec, 2> times{timespec{1, 0}, timespec{second, 250'000'000}};
    ASSERT_EQ(utimensat(AT_FDCWD, scratch_.path("file").c_str(), times.data(), 0), 0);
    struct stat stored {};
    ASSERT_EQ(stat(scratch_.path("file").c_str(), &stored), 0);
    if (stored.st_mtime != second) continue;  // this file system cannot store the time
    EXPECT_EQ(regularFilesIn(scratch_.path()).at(0).modified,
              Instant(std::chrono::seconds(second) + std::chrono::milliseconds(250)));
  }
}

TEST_F(RegularFilesIn, includesOnlyTheLinksThatLeadToFiles) {
  makeFile(scratch_.path("file"), "123");
  std::filesystem::create_directory(scratch_.path("folder"));
  std::filesystem::create_symlink("../file", scratch_.path("folder/link"));
  std::filesystem::create_symlink("nowhere", scratch_.path("folder/broken"));
  std::filesystem::create_symlink(".", scratch_.path("folder/itself"));
  const std::vector<FileEntry> files = regularFilesIn(scratch_.path("folder"));
  ASSERT_EQ(files.size(), 1U);
  EXPECT_EQ(files[0].name, "link");
  EXPECT_EQ(files[0].size, 3U);
}

TEST_F(RegularFilesIn, findsNoneInAFolderThatDoesNotExist) {
  EXPECT_THAT(regularFilesIn(scratch_.path("missing")), IsEmpty());
  EXPECT_THAT(regularFilesIn(scratch_.path("missing/too")), IsEmpty());
  EXPECT_THAT(regularFilesIn(scratch_.path()), IsEmpty());
}

TEST_F(RegularFilesIn, reportsWhyAFolderCannotBeListed) {
  makeFile(file_, "");
  EXPECT_EQ(outcomeOf([&] { regularFilesIn(file_); }),
            sentence(ENOTDIR, "The folder “Bookmarks.plist” couldn’t be opened", "Not a directory", file_));
  std::filesystem::create_directory(scratch_.path("closed"));
  chmod(scratch_.path("closed").c_str(), 0000);
  EXPECT_EQ(inUnprivilegedProcess([&] { return outcomeOf([&] { regularFilesIn(scratch_.path("closed")); }); }),
            sentence(EACCES, "The folder “closed” couldn’t be opened", "Permission denied", scratch_.path("closed")));
}

}  // namespace
