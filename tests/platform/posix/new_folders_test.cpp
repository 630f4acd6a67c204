// Creating real folders.
#include "platform/posix/new_folders.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <atomic>
#include <cerrno>
#include <filesystem>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "platform/file_system.h"
#include "tests/support/child_process.h"
#include "tests/support/file_outcomes.h"
#include "tests/support/scratch_folder.h"

namespace {

using testing::IsEmpty;
using testing::StartsWith;

class CreateFolders : public testing::Test {
 protected:
  ScratchFolder scratch_;
};

TEST_F(CreateFolders, givesEveryNewFolderExactlyTheMode) {
  for (const unsigned mask : {0000U, 0022U, 0077U, 0777U}) {
    const UmaskScope scope(mask);
    const std::string first = scratch_.path("mask " + std::to_string(mask));
    createFolders(first + "/two/three", 0750);
    EXPECT_EQ(modeOf(first), 0750U);
    EXPECT_EQ(modeOf(first + "/two"), 0750U);
    EXPECT_EQ(modeOf(first + "/two/three"), 0750U);
  }
}

TEST_F(CreateFolders, leavesDefaultAttributesToTheUmask) {
  for (const unsigned mask : {0000U, 0022U, 0077U}) {
    const UmaskScope scope(mask);
    const std::string path = scratch_.path("mask " + std::to_string(mask));
    createFolders(path + "/two", defaultAttributes);
    EXPECT_EQ(modeOf(path), 0777U & ~mask);
    EXPECT_EQ(modeOf(path + "/two"), 0777U & ~mask);
  }
}

TEST_F(CreateFolders, keepsTheModeOfFoldersThatExist) {
  std::filesystem::create_directory(scratch_.path("one"));
  chmod(scratch_.path("one").c_str(), 0755);
  createFolders(scratch_.path("one/two"), 0700);
  createFolders(scratch_.path("one"), 0700);
  EXPECT_EQ(modeOf(scratch_.path("one")), 0755U);
  EXPECT_EQ(modeOf(scratch_.path("one/two")), 0700U);
  createFolders(scratch_.path("one/two"), 0711);
  EXPECT_EQ(modeOf(scratch_.path("one/two")), 0700U);
}

TEST_F(CreateFolders, acceptsATrailingSlashAndALinkToAFolder) {
  createFolders(scratch_.path("one/two//"), 0700);
  EXPECT_EQ(modeOf(scratch_.path("one/two")), 0700U);
  std::filesystem::create_symlink("one/two", scratch_.path("link"));
  createFolders(scratch_.path("link"), 0700);
  createFolders(scratch_.path("link/three"), 0700);
  EXPECT_TRUE(std::filesystem::is_directory(scratch_.path("one/two/three")));
}

TEST_F(CreateFolders, reportsAFileInTheWay) {
  makeFile(scratch_.path("one"), "");
  EXPECT_EQ(outcomeOf([&] { createFolders(scratch_.path("one"), 0700); }),
            sentence(EEXIST, "The folder “one” couldn’t be created", "File exists", scratch_.path("one")));
  EXPECT_EQ(outcomeOf([&] { createFolders(scratch_.path("one/two"), 0700); }),
            sentence(ENOTDIR, "The folder “two” couldn’t be created", "Not a directory", scratch_.path("one/two")));
}

TEST_F(CreateFolders, reportsADanglingLink) {
  std::filesystem::create_symlink("nowhere", scratch_.path("link"));
  EXPECT_THAT(outcomeOf([&] { createFolders(scratch_.path("link/two"), 0700); }),
              StartsWith("POSIX " + std::to_string(EEXIST) + ": The folder “link” couldn’t be created"));
}

TEST_F(CreateFolders, createsNothingIfPermissionIsDenied) {
  chmod(scratch_.path().c_str(), 0555);
  EXPECT_EQ(inUnprivilegedProcess([&] { return outcomeOf([&] { createFolders(scratch_.path("one/two"), 0700); }); }),
            sentence(EACCES, "The folder “one” couldn’t be created", "Permission denied", scratch_.path("one")));
  EXPECT_THAT(namesIn(scratch_.path()), IsEmpty());
}

TEST_F(CreateFolders, toleratesConcurrentCreation) {
  std::atomic<int> failures = 0;
  for (int round = 0; round < 50; ++round) {
    const std::string path = scratch_.path(std::to_string(round) + "/two/three/four");
    std::vector<std::thread> threads;
    threads.reserve(4);
    for (int thread = 0; thread < 4; ++thread)
      threads.emplace_back([&] {
        if (outcomeOf([&] { createFolders(path, 0700, Flush::never); }) != "done") ++failures;
      });
    for (std::thread& thread : threads) thread.join();
  }
  EXPECT_EQ(failures, 0);
}

}  // namespace
