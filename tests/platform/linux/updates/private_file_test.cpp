#include "platform/linux/updates/private_file.h"

#include <gtest/gtest.h>
#include <sys/resource.h>

#include <csignal>
#include <filesystem>
#include <memory>
#include <string>

#include "platform/error.h"
#include "tests/support/environment_scope.h"
#include "tests/support/scratch_folder.h"

namespace {

class PrivateFileTest : public testing::Test {
 protected:
  ScratchFolder scratch_;
  std::string parent_ = scratch_.path("cache");
};

TEST_F(PrivateFileTest, keepsItsContentUntilItIsDestroyed) {
  std::string path;
  {
    PrivateFile file(parent_, "a.deb");
    path = file.path();
    file.append("one ");
    file.append("");
    file.append("two");
    EXPECT_EQ(file.size(), 7);
    EXPECT_EQ(file.sealed(), "one two");
    EXPECT_TRUE(file.isUnchanged());
    EXPECT_EQ(modeOf(path), 0400U);
  }
  EXPECT_FALSE(std::filesystem::exists(path));
  EXPECT_TRUE(namesIn(parent_).empty());
}

TEST_F(PrivateFileTest, noticesEveryChange) {
  PrivateFile file(parent_, "a.deb");
  file.append("content");
  file.sealed();
  std::filesystem::permissions(file.path(), std::filesystem::perms::owner_all);
  EXPECT_FALSE(file.isUnchanged());
  file.sealed();
  std::filesystem::rename(file.path(), parent_ + "/other");
  EXPECT_FALSE(file.isUnchanged());
  std::filesystem::create_symlink(parent_ + "/other", file.path());
  EXPECT_FALSE(file.isUnchanged());
}

TEST_F(PrivateFileTest, removesWhatEarlierRunsLeft) {
  std::make_unique<PrivateFile>(parent_, "a.deb")->keep();
  makeFile(parent_ + "/other", "");
  EXPECT_EQ(namesIn(parent_).size(), 2);
  PrivateFile file(parent_, "b.deb");
  EXPECT_EQ(namesIn(parent_).size(), 2);
  EXPECT_TRUE(std::filesystem::exists(file.path()));
  EXPECT_TRUE(std::filesystem::exists(parent_ + "/other"));
}

TEST_F(PrivateFileTest, saysWhatItCannotCreateOrWrite) {
  EXPECT_THROW(PrivateFile("", "a.deb"), Error);
  makeFile(parent_, "");
  EXPECT_THROW(PrivateFile(parent_, "a.deb"), Error);
}

TEST_F(PrivateFileTest, saysThatThereIsNoRoom) {
  PrivateFile file(parent_, "a.deb");
  const auto usual = std::signal(SIGXFSZ, SIG_IGN);
  rlimit limit{};
  getrlimit(RLIMIT_FSIZE, &limit);
  const rlimit small{4, limit.rlim_max};
  setrlimit(RLIMIT_FSIZE, &small);
  std::string problem;
  try {
    file.append("content");
  } catch (const Error& error) {
    problem = error.description();
  }
  setrlimit(RLIMIT_FSIZE, &limit);
  EXPECT_NE(std::signal(SIGXFSZ, usual), SIG_ERR);
  EXPECT_EQ(problem, "The file “a.deb” couldn’t be written: File too large (" + file.path() + ").");
}

TEST_F(PrivateFileTest, isBelowTheCacheOfTheUser) {
  const EnvironmentScope home("HOME", "/home/ann");
  const EnvironmentScope cache("XDG_CACHE_HOME", "/var/cache/ann");
  EXPECT_EQ(cacheFolder(), "/var/cache/ann/com.fenwarde.quillery");
  const EnvironmentScope relative("XDG_CACHE_HOME", "cache");
  EXPECT_EQ(cacheFolder(), "/home/ann/.cache/com.fenwarde.quillery");
}

}  // namespace
