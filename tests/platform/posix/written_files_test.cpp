// Writing real files: names, links, permissions and errors.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <utility>

#include "platform/posix/durable_files.h"
#include "tests/support/child_process.h"
#include "tests/support/file_outcomes.h"
#include "tests/support/scratch_folder.h"

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::StartsWith;

class WrittenFile : public testing::Test {
 protected:
  ScratchFolder scratch_;
  const std::string file_ = scratch_.path("Bookmarks.plist");
  const std::string backup_ = scratch_.path("Bookmarks-1.plist");

  static std::string newOutcome(const std::string& path, const std::string& content = "old bytes") {
    return outcomeOf([&] { writeNewFile(path, bytes(content)); });
  }
  static std::string writeOutcome(const std::string& path, const std::string& content) {
    return outcomeOf([&] { replaceFile(path, bytes(content), modeOfNewFiles()); });
  }

  // Makes a folder in which a user without privileges may create files, but which that user may not list.
  std::string makeUnlistableFolder() {
    std::string folder = scratch_.path("unlistable");
    std::filesystem::create_directory(folder);
    if (geteuid() == 0) {
      EXPECT_EQ(chown(folder.c_str(), unprivilegedUser, unprivilegedUser), 0);
    }
    chmod(folder.c_str(), 0300);
    return folder;
  }
  // Runs `work` as a user without privileges, who may not list the folder of `file`.
  static std::string withUnlistable(const std::string& file, const std::function<std::string()>& work) {
    return inUnprivilegedProcess([&] {
      std::error_code problem;
      const std::filesystem::directory_iterator entries(std::filesystem::path(file).parent_path(), problem);
      return problem == std::errc::permission_denied ? work() : "the folder can be listed";
    });
  }
};

// Writing a new file

using WriteNewFile = WrittenFile;

TEST_F(WriteNewFile, isPrivateWhateverTheUmask) {
  for (const unsigned mask : {0000U, 0777U}) {
    const UmaskScope scope(mask);
    const std::string path = scratch_.path(std::to_string(mask));
    EXPECT_EQ(newOutcome(path), "done");
    EXPECT_EQ(modeOf(path), 0600U);
  }
}

TEST_F(WriteNewFile, writesEveryByte) {
  const std::string content = patterned((9 << 20) + 1);
  EXPECT_EQ(newOutcome(backup_, content), "done");
  EXPECT_TRUE(contentOf(backup_) == content);
  EXPECT_EQ(newOutcome(scratch_.path("empty"), ""), "done");
  EXPECT_EQ(contentOf(scratch_.path("empty")), "");
}

TEST_F(WriteNewFile, failsIfTheNameExists) {
  makeFile(backup_, "there before");
  EXPECT_EQ(newOutcome(backup_),
            sentence(EEXIST, "The file “Bookmarks-1.plist” couldn’t be saved", "File exists", backup_));
  EXPECT_EQ(contentOf(backup_), "there before");
}

TEST_F(WriteNewFile, failsOnADanglingLink) {
  std::filesystem::create_symlink("elsewhere", backup_);
  EXPECT_THAT(newOutcome(backup_), StartsWith("POSIX " + std::to_string(EEXIST)));
  EXPECT_THAT(namesIn(scratch_.path()), ElementsAre("Bookmarks-1.plist"));
}

TEST_F(WriteNewFile, reportsAMissingFolder) {
  const std::string path = scratch_.path("missing/Bookmarks-1.plist");
  EXPECT_EQ(newOutcome(path),
            sentence(ENOENT, "The file “Bookmarks-1.plist” couldn’t be saved", "No such file or directory", path));
}

TEST_F(WriteNewFile, worksInAFolderThatCannotBeListed) {
  const std::string file = makeUnlistableFolder() + "/Bookmarks-1.plist";
  EXPECT_EQ(withUnlistable(file,
                           [&] {
                             const std::string written = newOutcome(file);
                             return written + ": " + contentOf(file);
                           }),
            "done: old bytes");
}

// Replacing a file

using ReplaceFile = WrittenFile;

TEST_F(ReplaceFile, replacesTheWholeContent) {
  makeFile(file_, patterned(5000));
  EXPECT_EQ(writeOutcome(file_, "short"), "done");
  EXPECT_EQ(contentOf(file_), "short");
  EXPECT_EQ(writeOutcome(file_, patterned(9 << 20)), "done");
  EXPECT_TRUE(contentOf(file_) == patterned(9 << 20));
  EXPECT_THAT(namesIn(scratch_.path()), ElementsAre("Bookmarks.plist"));
}

TEST_F(ReplaceFile, keepsThePermissionBitsWhateverTheUmask) {
  for (const unsigned mask : {0000U, 0077U, 0777U}) {
    const UmaskScope scope(mask);
    for (const unsigned mode : {0600U, 0644U, 0666U, 0640U, 0400U, 0755U}) {
      makeFile(scratch_.path("new"), "old");
      std::filesystem::rename(scratch_.path("new"), file_);
      chmod(file_.c_str(), static_cast<mode_t>(mode));
      EXPECT_EQ(writeOutcome(file_, "new"), "done");
      EXPECT_EQ(modeOf(file_), mode) << "umask " << mask;
    }
  }
}

TEST_F(ReplaceFile, givesANewFileTheModeThatTheUmaskLeaves) {
  for (const unsigned mask : {0022U, 0077U, 0002U}) {
    const UmaskScope scope(mask);
    std::filesystem::remove(file_);
    EXPECT_EQ(writeOutcome(file_, "new"), "done");
    EXPECT_EQ(contentOf(file_), "new");
    EXPECT_EQ(modeOf(file_), 0666U & ~mask);
    EXPECT_EQ(umask(static_cast<mode_t>(mask)), mask) << "the umask is unchanged";
  }
}

TEST_F(ReplaceFile, keepsOwnerAndGroup) {
  if (geteuid() != 0) GTEST_SKIP() << "only the superuser may change the owner of a file";
  makeFile(file_, "old");
  ASSERT_EQ(chown(file_.c_str(), 65534, 12345), 0);
  chmod(file_.c_str(), 06750);
  EXPECT_EQ(writeOutcome(file_, "new"), "done");
  struct stat status {};
  ASSERT_EQ(stat(file_.c_str(), &status), 0);
  EXPECT_EQ(status.st_uid, 65534U);
  EXPECT_EQ(status.st_gid, 12345U);
  EXPECT_EQ(modeOf(file_), 06750U);
}

TEST_F(ReplaceFile, followsALinkWithoutReplacingIt) {
  std::filesystem::create_directory(scratch_.path("real"));
  std::filesystem::create_directory(scratch_.path("links"));
  const std::string real = scratch_.path("real/file");
  makeFile(real, "old");
  chmod(real.c_str(), 0640);
  std::filesystem::create_symlink("../real/file", scratch_.path("links/relative"));
  std::filesystem::create_symlink(scratch_.path("links/relative"), file_);
  EXPECT_EQ(writeOutcome(file_, "new"), "done");
  EXPECT_TRUE(std::filesystem::is_symlink(file_));
  EXPECT_TRUE(std::filesystem::is_symlink(scratch_.path("links/relative")));
  EXPECT_EQ(contentOf(real), "new");
  EXPECT_EQ(modeOf(real), 0640U);
  EXPECT_THAT(namesIn(scratch_.path("real")), ElementsAre("file"));
  EXPECT_THAT(namesIn(scratch_.path("links")), ElementsAre("relative"));
}

TEST_F(ReplaceFile, createsTheTargetOfADanglingLink) {
  std::filesystem::create_symlink("not there yet", file_);
  EXPECT_EQ(writeOutcome(file_, "new"), "done");
  EXPECT_TRUE(std::filesystem::is_symlink(file_));
  EXPECT_EQ(contentOf(scratch_.path("not there yet")), "new");
}

TEST_F(ReplaceFile, reportsACycleOfLinks) {
  std::filesystem::create_symlink("other", file_);
  std::filesystem::create_symlink("Bookmarks.plist", scratch_.path("other"));
  EXPECT_EQ(writeOutcome(file_, "new"), sentence(ELOOP, "The file “Bookmarks.plist” couldn’t be saved",
                                                 "Too many levels of symbolic links", file_));
  EXPECT_THAT(namesIn(scratch_.path()), ElementsAre("Bookmarks.plist", "other"));
}

TEST_F(ReplaceFile, worksInAFolderThatCannotBeListed) {
  const std::string file = makeUnlistableFolder() + "/file";
  EXPECT_EQ(withUnlistable(file,
                           [&] {
                             const std::string first = writeOutcome(file, "one");
                             const std::string second = writeOutcome(file, "two");
                             return first + ", " + second + ": " + contentOf(file);
                           }),
            "done, done: two");
}

TEST_F(ReplaceFile, refusesAFolderAndAPipe) {
  std::filesystem::create_directory(file_);
  EXPECT_EQ(writeOutcome(file_, "new"),
            sentence(EISDIR, "The file “Bookmarks.plist” couldn’t be saved", "Is a directory", file_));
  const std::string pipe = scratch_.path("pipe");
  ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
  EXPECT_THAT(writeOutcome(pipe, "new"), HasSubstr("couldn’t be saved because it is not a regular file"));
  EXPECT_THAT(namesIn(scratch_.path()), ElementsAre("Bookmarks.plist", "pipe"));
}

TEST_F(ReplaceFile, acceptsTheLongestName) {
  const std::string path = scratch_.path(std::string(255, 'n'));
  makeFile(path, "old");
  EXPECT_EQ(writeOutcome(path, "new"), "done");
  EXPECT_EQ(contentOf(path), "new");
}

TEST_F(ReplaceFile, keepsTheOldFileInAReadOnlyFolder) {
  makeFile(file_, "old");
  chmod(file_.c_str(), 0666);
  chmod(scratch_.path().c_str(), 0555);
  EXPECT_EQ(inUnprivilegedProcess([&] { return writeOutcome(file_, "new"); }),
            sentence(EACCES, "The file “Bookmarks.plist” couldn’t be saved", "Permission denied", file_));
  EXPECT_EQ(contentOf(file_), "old");
  EXPECT_THAT(namesIn(scratch_.path()), ElementsAre("Bookmarks.plist"));
}

TEST_F(ReplaceFile, keepsTheOldFileIfItMayNotBeReplaced) {
  if (geteuid() != 0) GTEST_SKIP() << "only the superuser can create another user's file";
  makeFile(file_, "old");
  chmod(scratch_.path().c_str(), 01777);  // only the owner of a file may remove or rename it
  EXPECT_EQ(inUnprivilegedProcess([&] { return writeOutcome(file_, "new"); }),
            sentence(EPERM, "The file “Bookmarks.plist” couldn’t be saved", "Operation not permitted", file_));
  EXPECT_EQ(contentOf(file_), "old");
  EXPECT_THAT(namesIn(scratch_.path()), ElementsAre("Bookmarks.plist"));
}

TEST_F(ReplaceFile, reportsAMissingFolder) {
  const std::string path = scratch_.path("missing/Bookmarks.plist");
  EXPECT_EQ(writeOutcome(path, "new"),
            sentence(ENOENT, "The file “Bookmarks.plist” couldn’t be saved", "No such file or directory", path));
}

// Replacing an unchanged file

class ReplaceUnchangedFile : public WrittenFile {
 protected:
  void SetUp() override { makeFile(file_, "old"); }
  std::string holdsOutcome(const std::string& expected) {
    bool replaced = false;
    const std::string problem =
        outcomeOf([&] { replaced = replaceFileIf(file_, bytes(expected), bytes("new"), always).done; });
    return problem != "done" ? problem : replaced ? "replaced" : "not replaced";
  }
};

TEST_F(ReplaceUnchangedFile, keepsAModeThatWasChangedMeanwhile) {
  EXPECT_TRUE(replaceFileIf(file_, bytes("old"), bytes("new"), [&] {
                chmod(file_.c_str(), 0604);
                return true;
              }).done);
  EXPECT_EQ(modeOf(file_), 0604U);
}

#ifdef __APPLE__
timespec timeOfAccess(const struct stat& status) { return status.st_atimespec; }
timespec timeOfContent(const struct stat& status) { return status.st_mtimespec; }
timespec& timeOfChange(struct stat& status) { return status.st_ctimespec; }
#else
timespec timeOfAccess(const struct stat& status) { return status.st_atim; }
timespec timeOfContent(const struct stat& status) { return status.st_mtim; }
timespec& timeOfChange(struct stat& status) { return status.st_ctim; }
#endif

TEST_F(ReplaceUnchangedFile, replacesTheExpectedContentAndKeepsTheMode) {
  chmod(file_.c_str(), 0640);
  EXPECT_EQ(holdsOutcome("old"), "replaced");
  EXPECT_EQ(contentOf(file_), "new");
  EXPECT_EQ(modeOf(file_), 0640U);
  EXPECT_THAT(namesIn(scratch_.path()), ElementsAre("Bookmarks.plist"));
}

TEST_F(ReplaceUnchangedFile, leavesOtherContent) {
  EXPECT_EQ(holdsOutcome("olb"), "not replaced");
  EXPECT_EQ(contentOf(file_), "old");
  EXPECT_THAT(namesIn(scratch_.path()), ElementsAre("Bookmarks.plist"));
}

TEST_F(ReplaceUnchangedFile, replacesTheSameBytesOfEverySize) {
  for (const std::size_t size :
       {std::size_t{0}, std::size_t{1}, fileBlock - 1, fileBlock, fileBlock + 1, 3 * fileBlock}) {
    makeFile(file_, patterned(size));
    EXPECT_EQ(holdsOutcome(patterned(size)), "replaced") << size;
    EXPECT_EQ(contentOf(file_), "new") << size;
  }
}

TEST_F(ReplaceUnchangedFile, noticesOneChangedByteOfTheSameDate) {
  const std::string old = patterned(2 * fileBlock + 100);
  for (const std::size_t place : {std::size_t{0}, fileBlock - 1, fileBlock, old.size() - 1}) {
    makeFile(file_, old);
    struct stat before {};
    ASSERT_EQ(stat(file_.c_str(), &before), 0);
    std::string changed = old;
    changed[place] = static_cast<char>(changed[place] ^ 1);
    makeFile(file_, changed);
    const std::array<timespec, 2> times{timeOfAccess(before), timeOfContent(before)};
    ASSERT_EQ(utimensat(AT_FDCWD, file_.c_str(), times.data(), 0), 0);
    EXPECT_EQ(holdsOutcome(old), "not replaced") << place;
    EXPECT_TRUE(contentOf(file_) == changed) << place;
  }
}

TEST_F(ReplaceUnchangedFile, noticesAByteMoreOrLess) {
  for (const std::size_t size : {std::size_t{1}, fileBlock, 2 * fileBlock}) {
    makeFile(file_, patterned(size));
    EXPECT_EQ(holdsOutcome(patterned(size + 1)), "not replaced") << size;
    EXPECT_EQ(holdsOutcome(patterned(size - 1)), "not replaced") << size;
    EXPECT_EQ(holdsOutcome(""), "not replaced") << size;
    EXPECT_TRUE(contentOf(file_) == patterned(size)) << size;
  }
}

// Copies `text` to memory whose end is followed by a page that no access is allowed to.
Bytes beforeInaccessiblePage(const std::string& text) {
  const auto page = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
  const std::size_t size = (text.size() + page - 1) / page * page;
  void* const memory = mmap(nullptr, size + page, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  EXPECT_NE(memory, MAP_FAILED);
  auto* const end = static_cast<std::byte*>(memory) + size;
  EXPECT_EQ(mprotect(end, page, PROT_NONE), 0);
  std::memcpy(end - text.size(), text.data(), text.size());
  return {std::shared_ptr<const void>(memory, [=](void* start) { munmap(start, size + page); }), end - text.size(),
          text.size()};
}

TEST_F(ReplaceUnchangedFile, readsNothingBeyondTheExpectedBytes) {
  for (const std::size_t expected : {fileBlock - 1, fileBlock, fileBlock + 1, 2 * fileBlock}) {
    const std::string longer = patterned(expected + fileBlock);
    makeFile(file_, longer);
    EXPECT_EQ(inChildProcess([&] {
                const Bytes part = beforeInaccessiblePage(longer.substr(0, expected));
                return std::string(replaceFileIf(file_, part, bytes("new"), always).done ? "replaced" : "not replaced");
              }),
              "not replaced")
        << expected;
    EXPECT_TRUE(contentOf(file_) == longer) << expected;
  }
}

TEST_F(ReplaceUnchangedFile, followsALink) {
  const std::string link = scratch_.path("link");
  std::filesystem::create_symlink(file_, link);
  EXPECT_TRUE(replaceFileIf(link, bytes("old"), bytes("new"), always).done);
  EXPECT_EQ(contentOf(file_), "new");
  EXPECT_TRUE(std::filesystem::is_symlink(link));
}

// Some file systems advance their clock only every few milliseconds, so one property alone is not enough.
TEST(IsSameFile, comparesDeviceInodeAndChangeTime) {
  struct stat file {};
  file.st_dev = 1;
  file.st_ino = 2;
  timeOfChange(file) = {3, 4};
  EXPECT_TRUE(isSameFile(file, file));
  struct stat other = file;
  other.st_dev = 5;
  EXPECT_FALSE(isSameFile(file, other));
  other = file;
  other.st_ino = 5;
  EXPECT_FALSE(isSameFile(file, other));
  other = file;
  timeOfChange(other) = {3, 5};
  EXPECT_FALSE(isSameFile(file, other));
  timeOfChange(other) = {5, 4};
  EXPECT_FALSE(isSameFile(file, other));
}

}  // namespace
