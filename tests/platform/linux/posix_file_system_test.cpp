// Files and folders on a real file system: what only Linux has, or lets a test do.
#include "platform/linux/posix_file_system.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <pwd.h>
#include <sys/mount.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <filesystem>
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "platform/error.h"
#include "tests/platform/linux/intercepted_calls.h"
#include "tests/platform/linux/separate_mounts.h"
#include "tests/support/child_process.h"
#include "tests/support/environment_scope.h"
#include "tests/support/file_outcomes.h"
#include "tests/support/scratch_folder.h"

namespace {

// Called with the path of each file or folder that is flushed to disk; for a file without a name, with one below
// /proc/self. Returns the error number to fail with, or 0.
std::function<int(const std::string&)> onFlush;

// The error number that a rename without replacing fails with, as on a file system that does not support it; 0 for
// none.
int renameProblem = 0;
int failedRenames = 0;

}  // namespace

// These two replace the C library's functions in the whole test program, to observe system calls and make them fail.

extern "C" int fsync(int descriptor) {
  if (onFlush) {
    const std::string link = "/proc/self/fd/" + std::to_string(descriptor);
    const std::string path = std::filesystem::read_symlink(link).string();
    if (const int problem = onFlush(std::filesystem::exists(path) ? path : link); problem != 0) {
      errno = problem;
      return -1;
    }
  }
  return static_cast<int>(syscall(SYS_fsync, descriptor));
}

extern "C" int renameat2(int fromFolder, const char* from, int toFolder, const char* to, unsigned flags) noexcept {
  if (renameProblem != 0 && (flags & RENAME_NOREPLACE) != 0) {
    ++failedRenames;
    errno = renameProblem;
    return -1;
  }
  return static_cast<int>(syscall(SYS_renameat2, fromFolder, from, toFolder, to, flags));
}

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;
using testing::StartsWith;

class FlushScope {
 public:
  explicit FlushScope(std::function<int(const std::string&)> watcher) { onFlush = std::move(watcher); }
  ~FlushScope() { onFlush = nullptr; }
  FlushScope(const FlushScope&) = delete;
  FlushScope& operator=(const FlushScope&) = delete;
};

// Lets renames without replacing fail with an error number. Files without a name need none, so there are none.
class RenameScope {
 public:
  explicit RenameScope(int problem) {
    calls_.noUnnamedFiles = true;
    renameProblem = problem;
    failedRenames = 0;
  }
  ~RenameScope() { renameProblem = 0; }
  RenameScope(const RenameScope&) = delete;
  RenameScope& operator=(const RenameScope&) = delete;

 private:
  InterceptedCalls calls_;
};

std::size_t openDescriptors() { return namesIn("/proc/self/fd").size(); }

class PosixFileSystemTest : public testing::Test {
 protected:
  ScratchFolder scratch_;
  PosixFileSystem files_;
  std::string file_ = scratch_.path("Bookmarks.plist");

  std::string readOutcome(const std::string& path) {
    return outcomeOf([&] { files_.read(path); });
  }
  std::string writeOutcome(const std::string& path, const std::string& content) {
    return outcomeOf([&] { files_.writeAtomically(path, bytes(content)); });
  }
};

// Reading

using PosixRead = PosixFileSystemTest;

TEST_F(PosixRead, readsAFileThatIsLongerThanItsSize) {
  const std::string path = "/proc/self/status";  // its reported size is 0
  ASSERT_EQ(std::filesystem::file_size(path), 0U);
  EXPECT_THAT(std::string(files_.read(path).text()), StartsWith("Name:\t"));
  EXPECT_THAT(std::string(files_.read(path).text()), HasSubstr("\nThreads:\t"));
}

TEST_F(PosixRead, readsAFileThatIsShorterThanItsSize) {
  const std::string path = "/sys/kernel/mm/transparent_hugepage/enabled";  // its reported size is a page
  if (!std::filesystem::exists(path)) GTEST_SKIP() << path << " does not exist";
  ASSERT_GT(std::filesystem::file_size(path), contentOf(path).size());
  EXPECT_EQ(files_.read(path).text(), contentOf(path));
}

TEST_F(PosixRead, refusesATooLargeFileBeforeItTakesMemory) {
  makeFile(file_, "");
  std::filesystem::resize_file(file_, std::uintmax_t{1} << 32);  // a sparse file
  EXPECT_EQ(readOutcome(file_),
            sentence(EFBIG, "The file “Bookmarks.plist” couldn’t be opened", "File too large", file_));
}

TEST_F(PosixRead, refusesASparseFile) {
  const std::string outcome = "POSIX " + std::to_string(EFBIG) +
                              ": The file “Bookmarks.plist” couldn’t be opened because it is a sparse file (" + file_ +
                              ").";
  for (const std::uintmax_t size : {std::uintmax_t{0xFFFF'FFFF}, std::uintmax_t{65} << 20}) {
    makeFile(file_, "bplist00");
    std::filesystem::resize_file(file_, size);
    EXPECT_EQ(readOutcome(file_), outcome) << size;
  }
}

TEST_F(PosixRead, readsALargeFileWithASmallHole) {
  const std::string start = patterned(std::size_t{65} << 20);
  makeFile(file_, start);
  std::filesystem::resize_file(file_, start.size() + fileBlock);
  EXPECT_TRUE(files_.read(file_).text() == start + std::string(fileBlock, '\0'));
}

TEST_F(PosixRead, refusesAFileThatGrowsWithoutEnd) {
  const std::string path = "/proc/self/pagemap";  // its reported size is 0, and it has many gigabytes
  ASSERT_EQ(std::filesystem::file_size(path), 0U);
  EXPECT_EQ(readOutcome(path), "POSIX " + std::to_string(EFBIG) +
                                   ": The file “pagemap” couldn’t be opened because it grows while it is read (" +
                                   path + ").");
}

TEST_F(PosixRead, reportsAMissingFileWithNameAndPath) {
  EXPECT_EQ(readOutcome(file_),
            sentence(ENOENT, "The file “Bookmarks.plist” couldn’t be opened", "No such file or directory", file_));
}

TEST_F(PosixRead, refusesAFolder) {
  EXPECT_THAT(readOutcome(scratch_.path()), StartsWith("POSIX " + std::to_string(EISDIR) + ": The file “"));
}

TEST_F(PosixRead, refusesAPipeWithoutWaitingForIt) {
  ASSERT_EQ(mkfifo(file_.c_str(), 0600), 0);
  EXPECT_EQ(readOutcome(file_),
            "POSIX " + std::to_string(EINVAL) +
                ": The file “Bookmarks.plist” couldn’t be opened because it is not a regular file (" + file_ + ").");
  EXPECT_THAT(readOutcome("/dev/null"), HasSubstr("it is not a regular file"));
}

TEST_F(PosixRead, reportsThatPermissionIsDenied) {
  makeFile(file_, "secret");
  chmod(file_.c_str(), 0000);
  EXPECT_EQ(inUnprivilegedProcess([&] { return readOutcome(file_); }),
            sentence(EACCES, "The file “Bookmarks.plist” couldn’t be opened", "Permission denied", file_));
}

TEST_F(PosixRead, leavesNoDescriptorOpen) {
  makeFile(file_, "text");
  const std::size_t before = openDescriptors();
  files_.read(file_);
  files_.replaceIfHolds(file_, bytes("other"), bytes("new"), always);
  files_.replaceIfHolds(file_, bytes("text"), bytes("new"), always);
  readOutcome(scratch_.path());
  writeOutcome(file_, "new");
  writeOutcome(scratch_.path(), "new");
  outcomeOf([&] { files_.writeNew(scratch_.path("new"), bytes("new")); });
  outcomeOf([&] { files_.writeNew(scratch_.path("new"), bytes("new")); });
  EXPECT_EQ(openDescriptors(), before);
}

// Writing a new file

class PosixWriteNew : public PosixFileSystemTest {
 protected:
  std::string outcome(const std::string& path, const std::string& content = "old bytes") {
    return outcomeOf([&] { files_.writeNew(path, bytes(content)); });
  }
  std::string backup_ = scratch_.path("Bookmarks-1.plist");
};

TEST_F(PosixWriteNew, isPrivateFromItsFirstByte) {
  const UmaskScope scope(0);
  std::vector<unsigned> modes;
  const FlushScope watch([&](const std::string& path) {
    modes.push_back(modeOf(path));
    return 0;
  });
  files_.writeNew(backup_, bytes("private"));
  EXPECT_EQ(modes.front(), 0600U);
  EXPECT_EQ(modeOf(backup_), 0600U);
}

TEST_F(PosixWriteNew, flushesTheFileAndThenItsFolder) {
  std::vector<std::string> flushed;
  const FlushScope watch([&](const std::string& path) {
    flushed.push_back(path);
    EXPECT_EQ(contentOf(path == scratch_.path() ? backup_ : path), "old bytes");
    EXPECT_THAT(namesIn(scratch_.path()), SizeIs(path == scratch_.path() ? 1 : 0))
        << "it gets its name only when it is complete on disk";
    return 0;
  });
  files_.writeNew(backup_, bytes("old bytes"));
  EXPECT_THAT(flushed, ElementsAre(StartsWith("/proc/self/fd/"), scratch_.path()));
}

TEST_F(PosixWriteNew, hasAHiddenNameWhereAFileNeedsOne) {
  InterceptedCalls calls;
  calls.noUnnamedFiles = true;
  std::vector<std::string> flushed;
  const FlushScope watch([&](const std::string& path) {
    flushed.push_back(path);
    if (path != scratch_.path()) {
      EXPECT_EQ(modeOf(path), 0600U);
    }
    return 0;
  });
  files_.writeNew(backup_, bytes("old bytes"));
  EXPECT_THAT(flushed, ElementsAre(StartsWith(scratch_.path(".quillery-temporary-")), scratch_.path()));
  EXPECT_THAT(namesIn(scratch_.path()), ElementsAre("Bookmarks-1.plist"));
}

TEST_F(PosixWriteNew, canBeReadWhateverTheUmask) {
  chmod(scratch_.path().c_str(), 0777);
  for (const bool named : {false, true})
    EXPECT_EQ(inUnprivilegedProcess([&] {
                InterceptedCalls calls;
                calls.noUnnamedFiles = named;
                umask(0777);
                const std::string path = scratch_.path(named ? "named" : "unnamed");
                const std::string written = outcome(path);
                return written + ": " + contentOf(path) + " " + std::to_string(modeOf(path));
              }),
              "done: old bytes " + std::to_string(0600));
}

TEST_F(PosixWriteNew, worksWithoutRenameat2) {
  for (const int problem : {EINVAL, ENOSYS, ENOTSUP}) {
    const RenameScope scope(problem);
    EXPECT_EQ(outcome(backup_), "done") << problem;
    EXPECT_EQ(failedRenames, 1) << problem;
    EXPECT_EQ(contentOf(backup_), "old bytes");
    EXPECT_EQ(modeOf(backup_), 0600U);
    EXPECT_THAT(namesIn(scratch_.path()), ElementsAre("Bookmarks-1.plist")) << "the temporary name is gone";
    std::filesystem::remove(backup_);
  }
}

TEST_F(PosixWriteNew, failsIfTheNameExistsWithoutRenameat2) {
  makeFile(backup_, "there before");
  std::filesystem::create_symlink("elsewhere", scratch_.path("link"));
  for (const int problem : {EINVAL, ENOSYS, ENOTSUP}) {
    const RenameScope scope(problem);
    EXPECT_EQ(outcome(backup_),
              sentence(EEXIST, "The file “Bookmarks-1.plist” couldn’t be saved", "File exists", backup_));
    EXPECT_THAT(outcome(scratch_.path("link")), StartsWith("POSIX " + std::to_string(EEXIST)));
    EXPECT_EQ(failedRenames, 2) << problem;
    EXPECT_EQ(contentOf(backup_), "there before");
    EXPECT_THAT(namesIn(scratch_.path()), ElementsAre("Bookmarks-1.plist", "link"));
  }
}

TEST_F(PosixWriteNew, leavesNothingIfTheRenameFails) {
  const RenameScope scope(EIO);
  EXPECT_EQ(outcome(backup_),
            sentence(EIO, "The file “Bookmarks-1.plist” couldn’t be saved", "Input/output error", backup_));
  EXPECT_THAT(namesIn(scratch_.path()), IsEmpty());
}

TEST_F(PosixWriteNew, leavesNothingIfFlushingFails) {
  for (const bool folder : {false, true}) {
    const FlushScope watch([&](const std::string& path) { return folder == (path == scratch_.path()) ? EIO : 0; });
    EXPECT_EQ(outcome(backup_),
              sentence(EIO, "The file “Bookmarks-1.plist” couldn’t be saved", "Input/output error", backup_));
    EXPECT_THAT(namesIn(scratch_.path()), IsEmpty());
  }
}

TEST_F(PosixWriteNew, toleratesAFileSystemThatFlushesNoFolders) {
  const FlushScope watch([&](const std::string& path) { return path == scratch_.path() ? EINVAL : 0; });
  EXPECT_EQ(outcome(backup_), "done");
}

// Makes writes beyond `size` bytes fail with EFBIG, after a partial write up to that size.
void limitFileSize(std::size_t size) {
  const rlimit limit{size, size};
  EXPECT_NE(std::signal(SIGXFSZ, SIG_IGN), SIG_ERR);
  EXPECT_EQ(setrlimit(RLIMIT_FSIZE, &limit), 0);
}

TEST_F(PosixWriteNew, leavesNothingAfterAPartialWrite) {
  EXPECT_EQ(inChildProcess([&] {
              limitFileSize(5000);
              return outcome(backup_, patterned(10000));
            }),
            sentence(EFBIG, "The file “Bookmarks-1.plist” couldn’t be saved", "File too large", backup_));
  EXPECT_THAT(namesIn(scratch_.path()), IsEmpty());
}

// Runs `work` with a file system of one megabyte mounted on `folder`. Returns "no: ..." if the system does not allow
// it.
std::string onSmallDisk(const std::string& folder, const std::function<std::string()>& work) {
  return inChildProcess([&]() -> std::string {
    if (const std::string problem = separateMounts(); !problem.empty()) return "no: " + problem;
    if (mount("none", folder.c_str(), "tmpfs", 0, "size=1m") != 0) return "no: the disk cannot be mounted";
    return work();
  });
}

std::string joined(const std::vector<std::string>& names) {
  std::string text;
  for (const std::string& name : names) text += "[" + name + "]";
  return text;
}

TEST_F(PosixWriteNew, leavesNothingOnAFullDisk) {
  const std::string result = onSmallDisk(
      scratch_.path(), [&] { return outcome(backup_, patterned(2 << 20)) + joined(namesIn(scratch_.path())); });
  if (result.starts_with("no: ")) GTEST_SKIP() << result;
  EXPECT_EQ(result,
            sentence(ENOSPC, "The file “Bookmarks-1.plist” couldn’t be saved", "No space left on device", backup_));
}

// Permission bits

using PosixSetMode = PosixFileSystemTest;

TEST_F(PosixSetMode, followsNoLink) {
  makeFile(file_, "");
  chmod(file_.c_str(), 0644);
  const std::string link = scratch_.path("link");
  std::filesystem::create_symlink(file_, link);
  EXPECT_EQ(
      outcomeOf([&] { files_.setMode(link, 0600); }),
      sentence(ELOOP, "The file “link” couldn’t be given its permissions", "Too many levels of symbolic links", link));
  EXPECT_EQ(modeOf(file_), 0644U);
}

TEST_F(PosixSetMode, reportsAMissingFile) {
  EXPECT_EQ(outcomeOf([&] { files_.setMode(file_, 0600); }),
            sentence(ENOENT, "The file “Bookmarks.plist” couldn’t be given its permissions",
                     "No such file or directory", file_));
}

// Replacing a file

using PosixWriteAtomically = PosixFileSystemTest;

TEST_F(PosixWriteAtomically, followsAsManyLinksAsTheKernel) {
  makeFile(file_, "old");
  std::string target = file_;
  for (int links = 1; links <= 41; ++links) {
    const std::string link = scratch_.path("link " + std::to_string(links));
    std::filesystem::create_symlink(target, link);
    target = link;
    if (links < 39) continue;
    const std::string name = "The file “link " + std::to_string(links) + "” couldn’t be ";
    const bool isTooLong = links > 40;
    EXPECT_EQ(readOutcome(link),
              isTooLong ? sentence(ELOOP, name + "opened", "Too many levels of symbolic links", link) : "done");
    EXPECT_EQ(writeOutcome(link, std::to_string(links)),
              isTooLong ? sentence(ELOOP, name + "saved", "Too many levels of symbolic links", link) : "done");
    EXPECT_EQ(contentOf(file_), isTooLong ? "40" : std::to_string(links));
  }
}

TEST_F(PosixWriteAtomically, neverShowsAPartialFile) {
  const std::string old = patterned(3 << 20);
  makeFile(file_, old);
  const int open = ::open(file_.c_str(), O_RDONLY | O_CLOEXEC);
  const FlushScope watch([&](const std::string& path) {
    if (path != scratch_.path()) {
      EXPECT_TRUE(contentOf(file_) == old) << "the old file stays until the new one is complete on disk";
    }
    return 0;
  });
  EXPECT_EQ(writeOutcome(file_, "new"), "done");
  std::string still(old.size(), '\0');
  EXPECT_EQ(::read(open, still.data(), still.size()), static_cast<ssize_t>(old.size()));
  EXPECT_TRUE(still == old) << "a process that has the old file open can still read it";
  close(open);
}

TEST_F(PosixWriteAtomically, flushesAHiddenFileAndThenTheFolder) {
  makeFile(file_, "old");
  std::vector<std::string> flushed;
  std::vector<std::string> contents;
  const FlushScope watch([&](const std::string& path) {
    flushed.push_back(path);
    contents.push_back(contentOf(file_) + "," + (path == scratch_.path() ? "" : contentOf(path)));
    return 0;
  });
  EXPECT_EQ(writeOutcome(file_, "new"), "done");
  ASSERT_EQ(flushed.size(), 2U);
  EXPECT_THAT(flushed[0], StartsWith("/proc/self/fd/")) << "it has no name";
  EXPECT_EQ(flushed[1], scratch_.path());
  EXPECT_THAT(contents, ElementsAre("old,new", "new,")) << "renamed between the flushes";
}

TEST_F(PosixWriteAtomically, writesTheSameWithoutFlushing) {
  makeFile(file_, "old");
  int flushes = 0;
  const FlushScope watch([&](const std::string&) {
    ++flushes;
    return 0;
  });
  PosixFileSystem(Flush::never).writeAtomically(file_, bytes("new"));
  EXPECT_EQ(contentOf(file_), "new");
  EXPECT_EQ(flushes, 0);
}

TEST_F(PosixWriteAtomically, keepsTheOldFileIfFlushingFails) {
  makeFile(file_, "old");
  const FlushScope watch([&](const std::string& path) { return path == scratch_.path() ? 0 : EIO; });
  EXPECT_EQ(writeOutcome(file_, "new"),
            sentence(EIO, "The file “Bookmarks.plist” couldn’t be saved", "Input/output error", file_));
  EXPECT_EQ(contentOf(file_), "old");
  EXPECT_THAT(namesIn(scratch_.path()), ElementsAre("Bookmarks.plist"));
}

TEST_F(PosixWriteAtomically, ignoresAFailureToFlushTheFolder) {
  makeFile(file_, "old");
  const FlushScope watch([&](const std::string& path) { return path == scratch_.path() ? EIO : 0; });
  EXPECT_EQ(writeOutcome(file_, "new"), "done");
  EXPECT_EQ(contentOf(file_), "new");
}

TEST_F(PosixWriteAtomically, keepsTheOldFileAfterAPartialWrite) {
  makeFile(file_, "old");
  EXPECT_EQ(inChildProcess([&] {
              limitFileSize(5000);
              return writeOutcome(file_, patterned(10000));
            }),
            sentence(EFBIG, "The file “Bookmarks.plist” couldn’t be saved", "File too large", file_));
  EXPECT_EQ(contentOf(file_), "old");
  EXPECT_THAT(namesIn(scratch_.path()), ElementsAre("Bookmarks.plist"));
}

TEST_F(PosixWriteAtomically, keepsTheOldFileOnAFullDisk) {
  const std::string result = onSmallDisk(scratch_.path(), [&] {
    makeFile(file_, "old");
    return writeOutcome(file_, patterned(2 << 20)) + contentOf(file_) + joined(namesIn(scratch_.path()));
  });
  if (result.starts_with("no: ")) GTEST_SKIP() << result;
  EXPECT_EQ(result, sentence(ENOSPC, "The file “Bookmarks.plist” couldn’t be saved", "No space left on device", file_) +
                        "old[Bookmarks.plist]");
}

// Abandoned files

class PosixAbandonedFiles : public PosixFileSystemTest {
 protected:
  void SetUp() override { makeFile(file_, "old"); }
};

TEST_F(PosixAbandonedFiles, doNotIncludeTheFileThatAnotherProcessWrites) {
  for (const bool named : {false, true}) {
    InterceptedCalls calls;
    calls.noUnnamedFiles = named;
    std::string during;
    const FlushScope watch([&](const std::string& path) {
      if (path == scratch_.path() || !during.empty()) return 0;
      during = path;
      EXPECT_EQ(inChildProcess([&] { return writeOutcome(file_, "of the other process"); }), "done");
      return 0;
    });
    EXPECT_EQ(writeOutcome(file_, "new"), "done");
    EXPECT_NE(during, "");
    EXPECT_EQ(contentOf(file_), "new");
    EXPECT_THAT(namesIn(scratch_.path()), ElementsAre("Bookmarks.plist"));
  }
}

// Replacing an unchanged file

class PosixReplaceIfHolds : public PosixFileSystemTest {
 protected:
  void SetUp() override { makeFile(file_, "old"); }
  std::string outcome(const std::string& expected) {
    bool replaced = false;
    const std::string problem =
        outcomeOf([&] { replaced = files_.replaceIfHolds(file_, bytes(expected), bytes("new"), always).done; });
    return problem != "done" ? problem : replaced ? "replaced" : "not replaced";
  }
  // Calls `interfere` while the new file is first flushed to disk.
  std::string outcomeWhile(const std::function<void()>& interfere) {
    bool isFirst = true;
    const FlushScope watch([&](const std::string&) {
      if (std::exchange(isFirst, false)) interfere();
      return 0;
    });
    return outcome("old");
  }
  std::vector<std::string> names() const { return namesIn(scratch_.path()); }
};

TEST_F(PosixReplaceIfHolds, noticesAChangeWhileTheNewFileIsWritten) {
  EXPECT_EQ(outcomeWhile([&] { makeFile(file_, "changed in place"); }), "not replaced");
  EXPECT_EQ(contentOf(file_), "changed in place");
}

TEST_F(PosixReplaceIfHolds, doesNotRecreateARemovedFile) {
  const std::string gone =
      sentence(ENOENT, "The file “Bookmarks.plist” couldn’t be opened", "No such file or directory", file_);
  EXPECT_EQ(outcomeWhile([&] { std::filesystem::remove(file_); }), gone);
  EXPECT_THAT(names(), IsEmpty());
  EXPECT_EQ(outcome("old"),
            sentence(ENOENT, "The file “Bookmarks.plist” couldn’t be saved", "No such file or directory", file_));
}

TEST_F(PosixReplaceIfHolds, ignoresNewDatesOfTheSameBytes) {
  EXPECT_EQ(outcomeWhile([&] { makeFile(file_, "old"); }), "replaced");
  EXPECT_EQ(contentOf(file_), "new");
}

// The home folder

using PosixHomeFolder = PosixFileSystemTest;

TEST_F(PosixHomeFolder, isInHomeWithoutATrailingSlash) {
  EnvironmentScope home("HOME", "/home/ann");
  EXPECT_EQ(files_.homeFolder(), "/home/ann");
  home.set("/home/ann//");
  EXPECT_EQ(files_.homeFolder(), "/home/ann");
  home.set("/");
  EXPECT_EQ(files_.homeFolder(), "");
}

TEST_F(PosixHomeFolder, isInTheUserDatabaseIfHomeIsNotAbsolute) {
  const passwd* entry = getpwuid(geteuid());
  if (entry == nullptr) GTEST_SKIP() << "the user database has no entry for user " << geteuid();
  const std::string wanted = entry->pw_dir;
  EnvironmentScope home("HOME", std::nullopt);
  EXPECT_EQ(files_.homeFolder(), wanted);
  home.set("");
  EXPECT_EQ(files_.homeFolder(), wanted);
  home.set("relative/folder");
  EXPECT_EQ(files_.homeFolder(), wanted);
}

TEST_F(PosixHomeFolder, isAnErrorForAnUnknownUser) {
  if (geteuid() != 0) GTEST_SKIP() << "only the superuser can become another user";
  const EnvironmentScope home("HOME", std::nullopt);
  EXPECT_EQ(inChildProcess([&] {
              if (setuid(3456789) != 0) return std::string("cannot become another user");
              return outcomeOf([&] { files_.homeFolder(); });
            }),
            "POSIX 2: The home folder couldn’t be found because the user database has none for user 3456789.");
}

}  // namespace
