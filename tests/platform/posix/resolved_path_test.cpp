// Paths of real files and links.
#include "platform/posix/resolved_path.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "tests/support/scratch_folder.h"

namespace {

class ResolvedPath : public testing::Test {
 protected:
  ResolvedPath() {
    std::filesystem::create_directory(scratch_.path("folder"));
    makeFile(file_, "");
  }

  ScratchFolder scratch_;
  const std::string folder_ = std::filesystem::canonical(scratch_.path()).string() + "/folder";
  const std::string file_ = scratch_.path("folder/file");
};

TEST_F(ResolvedPath, hasNoDots) {
  EXPECT_EQ(resolvedPath(scratch_.path("folder/./../folder/file")), folder_ + "/file");
  EXPECT_EQ(resolvedPath("/"), "/");
}

TEST_F(ResolvedPath, hasNoLinks) {
  std::filesystem::create_symlink(file_, scratch_.path("link"));
  std::filesystem::create_directory_symlink(scratch_.path("folder"), scratch_.path("linked"));
  EXPECT_EQ(resolvedPath(scratch_.path("link")), folder_ + "/file");
  EXPECT_EQ(resolvedPath(scratch_.path("linked/file")), folder_ + "/file");
}

TEST_F(ResolvedPath, keepsNamesThatDoNotExist) {
  std::filesystem::create_directory_symlink(scratch_.path("folder"), scratch_.path("linked"));
  EXPECT_EQ(resolvedPath(scratch_.path("linked/none/file")), folder_ + "/none/file");
  EXPECT_EQ(resolvedPath("/nonexistent"), "/nonexistent");
  EXPECT_EQ(resolvedPath(""), "");
}

}  // namespace
