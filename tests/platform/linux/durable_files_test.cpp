// Changes that another process makes while a file is being replaced.
#include "platform/posix/durable_files.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <fstream>
#include <functional>
#include <string>

#include "tests/platform/linux/intercepted_calls.h"
#include "tests/support/scratch_folder.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

struct stat statusOf(const std::string& path) {
  struct stat status {};
  EXPECT_EQ(stat(path.c_str(), &status), 0) << path;
  return status;
}

class ReplaceFileIf : public testing::Test {
 protected:
  void SetUp() override { makeFile(file_, "old"); }
  Replacement replace() {
    return replaceFileIf(
        file_, Bytes(std::string("old")), Bytes(std::string("new")), [] { return true; }, Flush::never);
  }
  // Replaces the file and calls `interfere` when its content has just been compared.
  bool replaceWhile(const std::function<void()>& interfere) {
    InterceptedCalls calls;
    calls.beforeLink = [&] {
      interfere();
      return 0;
    };
    return replace().done;
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

bool haveSameChangeTime(const struct stat& one, const struct stat& other) {
  return one.st_ctim.tv_sec == other.st_ctim.tv_sec && one.st_ctim.tv_nsec == other.st_ctim.tv_nsec;
}

TEST_F(ReplaceFileIf, replacesAFileThatNobodyChanges) {
  EXPECT_TRUE(replaceWhile([] {}));
  EXPECT_EQ(contentOf(file_), "new");
}

// The file's name is gone with the rename, but a program that had it open can still write to it.
TEST_F(ReplaceFileIf, returnsWhatWasWrittenAfterTheComparison) {
  for (const char* const late : {"olb", "old and longer", "o", ""}) {
    makeFile(file_, "old");
    std::fstream open(file_);
    InterceptedCalls calls;
    calls.beforeRename = [&] {
      std::filesystem::resize_file(file_, 0);
      open << late << std::flush;
      return 0;
    };
    const Replacement replacement = replace();
    EXPECT_TRUE(replacement.done);
    EXPECT_TRUE(replacement.changedLate);
    ASSERT_TRUE(replacement.lateBytes);
    EXPECT_EQ(replacement.lateBytes->text(), late);
    EXPECT_EQ(contentOf(file_), "new");
  }
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

}  // namespace
