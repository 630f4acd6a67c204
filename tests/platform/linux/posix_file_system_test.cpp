// Files and folders on a real file system.
#include "platform/linux/posix_file_system.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <pwd.h>
#include <sys/file.h>
#include <sys/mman.h>
#include <sys/mount.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "platform/error.h"
#include "tests/platform/linux/child_process.h"
#include "tests/platform/linux/environment_scope.h"
#include "tests/platform/linux/intercepted_calls.h"
#include "tests/platform/linux/scratch_folder.h"

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

class UmaskScope {
 public:
  explicit UmaskScope(mode_t mask) : old_(umask(mask)) {}
  ~UmaskScope() { umask(old_); }
  UmaskScope(const UmaskScope&) = delete;
  UmaskScope& operator=(const UmaskScope&) = delete;

 private:
  mode_t old_;
};

// Returns "done", or the domain, code and description of the error that an operation throws.
std::string outcomeOf(const std::function<void()>& operation) {
  try {
    operation();
    return "done";
  } catch (const Error& error) {
    return error.domain() + " " + std::to_string(error.code()) + ": " + error.description();
  }
}

std::string sentence(int code, const std::string& failed, const std::string& words, const std::string& path) {
  return "POSIX " + std::to_string(code) + ": " + failed + ": " + words + " (" + path + ").";
}

std::size_t openDescriptors() { return namesIn("/proc/self/fd").size(); }

bool always() { return true; }

Bytes bytes(std::string text) { return Bytes(std::move(text)); }

std::string patterned(std::size_t size) {
  std::string text(size, '\0');
  for (std::size_t index = 0; index < size; ++index) text[index] = static_cast<char>(index * 7 + index / 251);
  return text;
}

constexpr std::size_t block = std::size_t{256} << 10;

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

// Reading

using PosixRead = PosixFileSystemTest;

TEST_F(PosixRead, returnsEveryByte) {
  for (const std::size_t size :
       {std::size_t{1}, std::size_t{4095}, std::size_t{4096}, block, (std::size_t{9} << 20) + block}) {
    makeFile(file_, patterned(size));
    EXPECT_TRUE(files_.read(file_).text() == patterned(size)) << size;
  }
}

TEST_F(PosixRead, readsAnEmptyFile) {
  makeFile(file_, "");
  EXPECT_EQ(files_.read(file_).size(), 0U);
}

TEST_F(PosixRead, contentOutlivesTheFile) {
  makeFile(file_, "old");
  const Bytes old = files_.read(file_);
  std::filesystem::resize_file(file_, 0);
  std::filesystem::remove(file_);
  EXPECT_EQ(old.text(), "old");
}

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
  std::filesystem::resize_file(file_, start.size() + block);
  EXPECT_TRUE(files_.read(file_).text() == start + std::string(block, '\0'));
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

// Listing a folder

using PosixFilesIn = PosixFileSystemTest;

TEST_F(PosixFilesIn, returnsNamesSizesAndTimesOfRegularFiles) {
  makeFile(scratch_.path("one"), "12345");
  makeFile(scratch_.path(".hidden"), "");
  std::filesystem::create_directory(scratch_.path("folder"));
  makeFile(scratch_.path("folder/inner"), "");
  ASSERT_EQ(mkfifo(scratch_.path("pipe").c_str(), 0600), 0);
  const std::array<timespec, 2> times{timespec{1, 0}, timespec{1'789'977'600, 250'000'000}};
  ASSERT_EQ(utimensat(AT_FDCWD, scratch_.path("one").c_str(), times.data(), 0), 0);
  std::vector<FileEntry> files = files_.filesIn(scratch_.path());
  std::ranges::sort(files, {}, &FileEntry::name);
  ASSERT_EQ(files.size(), 2U);
  EXPECT_EQ(files[0].name, ".hidden");
  EXPECT_EQ(files[0].size, 0U);
  EXPECT_EQ(files[1].name, "one");
  EXPECT_EQ(files[1].size, 5U);
  EXPECT_EQ(files[1].modified.time_since_epoch(), std::chrono::milliseconds(1'789'977'600'250));
}

TEST_F(PosixFilesIn, returnsTimesOfEveryCentury) {
  makeFile(scratch_.path("file"), "");
  for (const std::int64_t second : {-9'223'372'037LL, 0LL, 9'223'372'036LL, 9'223'372'037LL, 14'000'000'000LL}) {
    const std::array<timespec, 2> times{timespec{1, 0}, timespec{second, 250'000'000}};
    ASSERT_EQ(utimensat(AT_FDCWD, scratch_.path("file").c_str(), times.data(), 0), 0);
    struct stat stored {};
    ASSERT_EQ(stat(scratch_.path("file").c_str(), &stored), 0);
    if (stored.st_mtim.tv_sec != second) continue;  // this file system cannot store the time
    EXPECT_EQ(files_.filesIn(scratch_.path()).at(0).modified,
              Instant(std::chrono::seconds(second) + std::chrono::milliseconds(250)));
  }
}

TEST_F(PosixFilesIn, includesOnlyTheLinksThatLeadToFiles) {
  makeFile(scratch_.path("file"), "123");
  std::filesystem::create_directory(scratch_.path("folder"));
  std::filesystem::create_symlink("../file", scratch_.path("folder/link"));
  std::filesystem::create_symlink("nowhere", scratch_.path("folder/broken"));
  std::filesystem::create_symlink(".", scratch_.path("folder/itself"));
  const std::vector<FileEntry> files = files_.filesIn(scratch_.path("folder"));
  ASSERT_EQ(files.size(), 1U);
  EXPECT_EQ(files[0].name, "link");
  EXPECT_EQ(files[0].size, 3U);
}

TEST_F(PosixFilesIn, findsNoneInAFolderThatDoesNotExist) {
  EXPECT_THAT(files_.filesIn(scratch_.path("missing")), IsEmpty());
  EXPECT_THAT(files_.filesIn(scratch_.path("missing/too")), IsEmpty());
  EXPECT_THAT(files_.filesIn(scratch_.path()), IsEmpty());
}

TEST_F(PosixFilesIn, reportsWhyAFolderCannotBeListed) {
  makeFile(file_, "");
  EXPECT_EQ(outcomeOf([&] { files_.filesIn(file_); }),
            sentence(ENOTDIR, "The folder “Bookmarks.plist” couldn’t be opened", "Not a directory", file_));
  std::filesystem::create_directory(scratch_.path("closed"));
  chmod(scratch_.path("closed").c_str(), 0000);
  EXPECT_EQ(inUnprivilegedProcess([&] { return outcomeOf([&] { files_.filesIn(scratch_.path("closed")); }); }),
            sentence(EACCES, "The folder “closed” couldn’t be opened", "Permission denied", scratch_.path("closed")));
}

// Creating folders

using PosixCreateFolder = PosixFileSystemTest;

TEST_F(PosixCreateFolder, givesEveryNewFolderExactlyTheMode) {
  for (const mode_t mask : {0000U, 0022U, 0077U, 0777U}) {
    const UmaskScope scope(mask);
    const std::string first = scratch_.path("mask " + std::to_string(mask));
    files_.createFolder(first + "/two/three", 0750);
    EXPECT_EQ(modeOf(first), 0750U);
    EXPECT_EQ(modeOf(first + "/two"), 0750U);
    EXPECT_EQ(modeOf(first + "/two/three"), 0750U);
  }
}

TEST_F(PosixCreateFolder, leavesDefaultAttributesToTheUmask) {
  for (const mode_t mask : {0000U, 0022U, 0077U}) {
    const UmaskScope scope(mask);
    const std::string path = scratch_.path("mask " + std::to_string(mask));
    files_.createFolder(path + "/two", defaultAttributes);
    EXPECT_EQ(modeOf(path), 0777U & ~mask);
    EXPECT_EQ(modeOf(path + "/two"), 0777U & ~mask);
  }
}

TEST_F(PosixCreateFolder, keepsTheModeOfFoldersThatExist) {
  std::filesystem::create_directory(scratch_.path("one"));
  chmod(scratch_.path("one").c_str(), 0755);
  files_.createFolder(scratch_.path("one/two"), 0700);
  files_.createFolder(scratch_.path("one"), 0700);
  EXPECT_EQ(modeOf(scratch_.path("one")), 0755U);
  EXPECT_EQ(modeOf(scratch_.path("one/two")), 0700U);
  files_.createFolder(scratch_.path("one/two"), 0711);
  EXPECT_EQ(modeOf(scratch_.path("one/two")), 0700U);
}

TEST_F(PosixCreateFolder, acceptsATrailingSlashAndALinkToAFolder) {
  files_.createFolder(scratch_.path("one/two//"), 0700);
  EXPECT_EQ(modeOf(scratch_.path("one/two")), 0700U);
  std::filesystem::create_symlink("one/two", scratch_.path("link"));
  files_.createFolder(scratch_.path("link"), 0700);
  files_.createFolder(scratch_.path("link/three"), 0700);
  EXPECT_TRUE(std::filesystem::is_directory(scratch_.path("one/two/three")));
}

TEST_F(PosixCreateFolder, reportsAFileInTheWay) {
  makeFile(scratch_.path("one"), "");
  EXPECT_EQ(outcomeOf([&] { files_.createFolder(scratch_.path("one"), 0700); }),
            sentence(EEXIST, "The folder “one” couldn’t be created", "File exists", scratch_.path("one")));
  EXPECT_EQ(outcomeOf([&] { files_.createFolder(scratch_.path("one/two"), 0700); }),
            sentence(ENOTDIR, "The folder “two” couldn’t be created", "Not a directory", scratch_.path("one/two")));
}

TEST_F(PosixCreateFolder, reportsADanglingLink) {
  std::filesystem::create_symlink("nowhere", scratch_.path("link"));
  EXPECT_THAT(outcomeOf([&] { files_.createFolder(scratch_.path("link/two"), 0700); }),
              StartsWith("POSIX " + std::to_string(EEXIST) + ": The folder “link” couldn’t be created"));
}

TEST_F(PosixCreateFolder, createsNothingIfPermissionIsDenied) {
  chmod(scratch_.path().c_str(), 0555);
  EXPECT_EQ(
      inUnprivilegedProcess([&] { return outcomeOf([&] { files_.createFolder(scratch_.path("one/two"), 0700); }); }),
      sentence(EACCES, "The folder “one” couldn’t be created", "Permission denied", scratch_.path("one")));
  EXPECT_THAT(namesIn(scratch_.path()), IsEmpty());
}

TEST_F(PosixCreateFolder, toleratesConcurrentCreation) {
  std::atomic<int> failures = 0;
  for (int round = 0; round < 50; ++round) {
    const std::string path = scratch_.path(std::to_string(round) + "/two/three/four");
    std::vector<std::jthread> threads;
    threads.reserve(4);
    for (int thread = 0; thread < 4; ++thread)
      threads.emplace_back([&] {
        if (outcomeOf([&] { PosixFileSystem(Flush::never).createFolder(path, 0700); }) != "done") ++failures;
      });
  }
  EXPECT_EQ(failures, 0);
}

// Writing a new file

class PosixWriteNew : public PosixFileSystemTest {
 protected:
  std::string outcome(const std::string& path, const std::string& content = "old bytes") {
    return outcomeOf([&] { files_.writeNew(path, bytes(content)); });
  }
  std::string backup_ = scratch_.path("Bookmarks-1.plist");
};

TEST_F(PosixWriteNew, writesEveryByte) {
  const std::string content = patterned((9 << 20) + 1);
  EXPECT_EQ(outcome(backup_, content), "done");
  EXPECT_TRUE(contentOf(backup_) == content);
  EXPECT_EQ(outcome(scratch_.path("empty"), ""), "done");
  EXPECT_EQ(contentOf(scratch_.path("empty")), "");
}

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

TEST_F(PosixWriteNew, failsIfTheNameExists) {
  makeFile(backup_, "there before");
  EXPECT_EQ(outcome(backup_),
            sentence(EEXIST, "The file “Bookmarks-1.plist” couldn’t be saved", "File exists", backup_));
  EXPECT_EQ(contentOf(backup_), "there before");
}

TEST_F(PosixWriteNew, failsOnADanglingLink) {
  std::filesystem::create_symlink("elsewhere", backup_);
  EXPECT_THAT(outcome(backup_), StartsWith("POSIX " + std::to_string(EEXIST)));
  EXPECT_THAT(namesIn(scratch_.path()), ElementsAre("Bookmarks-1.plist"));
}

TEST_F(PosixWriteNew, reportsAMissingFolder) {
  const std::string path = scratch_.path("missing/Bookmarks-1.plist");
  EXPECT_EQ(outcome(path),
            sentence(ENOENT, "The file “Bookmarks-1.plist” couldn’t be saved", "No such file or directory", path));
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

TEST_F(PosixWriteNew, worksInAFolderThatCannotBeListed) {
  const std::string file = makeUnlistableFolder() + "/Bookmarks-1.plist";
  EXPECT_EQ(withUnlistable(file,
                           [&] {
                             const std::string written = outcome(file);
                             return written + ": " + contentOf(file);
                           }),
            "done: old bytes");
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

TEST_F(PosixSetMode, setsExactlyTheMode) {
  makeFile(file_, "");
  files_.setMode(file_, 0600);
  EXPECT_EQ(modeOf(file_), 0600U);
  files_.setMode(file_, 0644);
  EXPECT_EQ(modeOf(file_), 0644U);
}

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

TEST_F(PosixWriteAtomically, replacesTheWholeContent) {
  makeFile(file_, patterned(5000));
  EXPECT_EQ(writeOutcome(file_, "short"), "done");
  EXPECT_EQ(contentOf(file_), "short");
  EXPECT_EQ(writeOutcome(file_, patterned(9 << 20)), "done");
  EXPECT_TRUE(contentOf(file_) == patterned(9 << 20));
  EXPECT_THAT(namesIn(scratch_.path()), ElementsAre("Bookmarks.plist"));
}

TEST_F(PosixWriteAtomically, keepsThePermissionBitsWhateverTheUmask) {
  for (const mode_t mask : {0000U, 0077U, 0777U}) {
    const UmaskScope scope(mask);
    for (const unsigned mode : {0600U, 0644U, 0666U, 0640U, 0400U, 0755U}) {
      makeFile(scratch_.path("new"), "old");
      std::filesystem::rename(scratch_.path("new"), file_);
      chmod(file_.c_str(), mode);
      EXPECT_EQ(writeOutcome(file_, "new"), "done");
      EXPECT_EQ(modeOf(file_), mode) << "umask " << mask;
    }
  }
}

TEST_F(PosixWriteAtomically, givesANewFileTheModeThatTheUmaskLeaves) {
  for (const mode_t mask : {0022U, 0077U, 0002U}) {
    const UmaskScope scope(mask);
    std::filesystem::remove(file_);
    EXPECT_EQ(writeOutcome(file_, "new"), "done");
    EXPECT_EQ(contentOf(file_), "new");
    EXPECT_EQ(modeOf(file_), 0666U & ~mask);
    EXPECT_EQ(umask(mask), mask) << "the umask is unchanged";
  }
}

TEST_F(PosixWriteAtomically, keepsOwnerAndGroup) {
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

TEST_F(PosixWriteAtomically, followsALinkWithoutReplacingIt) {
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

TEST_F(PosixWriteAtomically, createsTheTargetOfADanglingLink) {
  std::filesystem::create_symlink("not there yet", file_);
  EXPECT_EQ(writeOutcome(file_, "new"), "done");
  EXPECT_TRUE(std::filesystem::is_symlink(file_));
  EXPECT_EQ(contentOf(scratch_.path("not there yet")), "new");
}

TEST_F(PosixWriteAtomically, reportsACycleOfLinks) {
  std::filesystem::create_symlink("other", file_);
  std::filesystem::create_symlink("Bookmarks.plist", scratch_.path("other"));
  EXPECT_EQ(writeOutcome(file_, "new"), sentence(ELOOP, "The file “Bookmarks.plist” couldn’t be saved",
                                                 "Too many levels of symbolic links", file_));
  EXPECT_THAT(namesIn(scratch_.path()), ElementsAre("Bookmarks.plist", "other"));
}

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

TEST_F(PosixWriteAtomically, worksInAFolderThatCannotBeListed) {
  const std::string file = makeUnlistableFolder() + "/file";
  EXPECT_EQ(withUnlistable(file,
                           [&] {
                             const std::string first = writeOutcome(file, "one");
                             const std::string second = writeOutcome(file, "two");
                             return first + ", " + second + ": " + contentOf(file);
                           }),
            "done, done: two");
}

TEST_F(PosixWriteAtomically, refusesAFolderAndAPipe) {
  std::filesystem::create_directory(file_);
  EXPECT_EQ(writeOutcome(file_, "new"),
            sentence(EISDIR, "The file “Bookmarks.plist” couldn’t be saved", "Is a directory", file_));
  const std::string pipe = scratch_.path("pipe");
  ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
  EXPECT_THAT(writeOutcome(pipe, "new"), HasSubstr("couldn’t be saved because it is not a regular file"));
  EXPECT_THAT(namesIn(scratch_.path()), ElementsAre("Bookmarks.plist", "pipe"));
}

TEST_F(PosixWriteAtomically, acceptsTheLongestName) {
  const std::string path = scratch_.path(std::string(255, 'n'));
  makeFile(path, "old");
  EXPECT_EQ(writeOutcome(path, "new"), "done");
  EXPECT_EQ(contentOf(path), "new");
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

TEST_F(PosixWriteAtomically, keepsTheOldFileInAReadOnlyFolder) {
  makeFile(file_, "old");
  chmod(file_.c_str(), 0666);
  chmod(scratch_.path().c_str(), 0555);
  EXPECT_EQ(inUnprivilegedProcess([&] { return writeOutcome(file_, "new"); }),
            sentence(EACCES, "The file “Bookmarks.plist” couldn’t be saved", "Permission denied", file_));
  EXPECT_EQ(contentOf(file_), "old");
  EXPECT_THAT(namesIn(scratch_.path()), ElementsAre("Bookmarks.plist"));
}

TEST_F(PosixWriteAtomically, keepsTheOldFileIfItMayNotBeReplaced) {
  if (geteuid() != 0) GTEST_SKIP() << "only the superuser can create another user's file";
  makeFile(file_, "old");
  chmod(scratch_.path().c_str(), 01777);  // only the owner of a file may remove or rename it
  EXPECT_EQ(inUnprivilegedProcess([&] { return writeOutcome(file_, "new"); }),
            sentence(EPERM, "The file “Bookmarks.plist” couldn’t be saved", "Operation not permitted", file_));
  EXPECT_EQ(contentOf(file_), "old");
  EXPECT_THAT(namesIn(scratch_.path()), ElementsAre("Bookmarks.plist"));
}

TEST_F(PosixWriteAtomically, reportsAMissingFolder) {
  const std::string path = scratch_.path("missing/Bookmarks.plist");
  EXPECT_EQ(writeOutcome(path, "new"),
            sentence(ENOENT, "The file “Bookmarks.plist” couldn’t be saved", "No such file or directory", path));
}

// Abandoned files

// Returns the name that a temporary file with this file's inode number has.
std::string temporaryNameOf(const std::string& path) {
  struct stat status {};
  EXPECT_EQ(stat(path.c_str(), &status), 0) << path;
  std::array<char, 32> inode{};
  EXPECT_GT(std::snprintf(inode.data(), inode.size(), "-%lx", static_cast<unsigned long>(status.st_ino)), 0);
  return ".quillery-temporary-0123456789abcdef0123456789abcdef" + std::string(inode.data());
}

class PosixAbandonedFiles : public PosixFileSystemTest {
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
    files_.removeAbandonedFiles(file_, {backup_});
    return namesIn(scratch_.path());
  }

  const std::string backup_ = scratch_.path("backup");
};

TEST_F(PosixAbandonedFiles, areRemovedBesideAFile) {
  abandon();
  EXPECT_THAT(remaining(), ElementsAre("Bookmarks.plist", "backup"));
}

TEST_F(PosixAbandonedFiles, areRemovedIfTheyGotNoFurtherThanTheirFirstName) {
  makeFile(scratch_.path(".quillery-temporary-aBc123"), "");
  EXPECT_THAT(remaining(), ElementsAre("Bookmarks.plist", "backup"));
}

TEST_F(PosixAbandonedFiles, areRemovedBesideTheTargetOfALink) {
  const ScratchFolder other;
  std::filesystem::create_symlink(file_, other.path("link"));
  abandon();
  files_.removeAbandonedFiles(other.path("link"), {});
  EXPECT_THAT(namesIn(scratch_.path()), ElementsAre("Bookmarks.plist", "backup"));
}

TEST_F(PosixAbandonedFiles, areRemovedFromAFolder) {
  abandon();
  files_.removeAbandonedFiles(scratch_.path() + "/", {});
  EXPECT_THAT(namesIn(scratch_.path()), ElementsAre("Bookmarks.plist", "backup"));
  files_.removeAbandonedFiles(scratch_.path("missing") + "/", {});
}

TEST_F(PosixAbandonedFiles, areRemovedWhenAnyFileIsReplaced) {
  abandon();
  EXPECT_EQ(writeOutcome(file_, "new"), "done");
  EXPECT_THAT(namesIn(scratch_.path()), ElementsAre("Bookmarks.plist", "backup"));
}

TEST_F(PosixAbandonedFiles, doNotIncludeFilesInUse) {
  const std::string sorted = scratch_.path(moveTo(file_, temporaryNameOf(file_)));
  const std::string restored = scratch_.path(moveTo(backup_, temporaryNameOf(backup_)));
  files_.removeAbandonedFiles(sorted, {restored});
  EXPECT_THAT(namesIn(scratch_.path()), SizeIs(2));
  EXPECT_EQ(writeOutcome(sorted, "new"), "done");
  EXPECT_EQ(contentOf(sorted), "new");
}

TEST_F(PosixAbandonedFiles, doNotIncludeTheTargetsOfLinks) {
  const ScratchFolder links;
  std::filesystem::create_symlink(scratch_.path(moveTo(file_, temporaryNameOf(file_))), links.path("file"));
  std::filesystem::create_symlink(scratch_.path(moveTo(backup_, temporaryNameOf(backup_))), links.path("backup"));
  files_.removeAbandonedFiles(links.path("file"), {links.path("backup")});
  EXPECT_THAT(namesIn(scratch_.path()), SizeIs(2));
}

TEST_F(PosixAbandonedFiles, doNotIncludeFilesOfOtherNames) {
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

TEST_F(PosixAbandonedFiles, doNotIncludeAnythingButFilesOfOneLink) {
  std::filesystem::create_hard_link(file_, scratch_.path(temporaryNameOf(file_)));
  std::filesystem::create_symlink(backup_, scratch_.path(temporaryNameOf(backup_)));
  std::filesystem::create_directory(scratch_.path("folder"));
  moveTo(scratch_.path("folder"), temporaryNameOf(scratch_.path("folder")));
  ASSERT_EQ(mkfifo(scratch_.path(".quillery-temporary-a_pipe").c_str(), 0600), 0);
  const std::vector<std::string> before = namesIn(scratch_.path());
  EXPECT_EQ(remaining(), before);
}

TEST_F(PosixAbandonedFiles, doNotIncludeLockedFiles) {
  const std::string path = scratch_.path(abandon());
  const int file = open(path.c_str(), O_RDONLY | O_CLOEXEC);
  ASSERT_EQ(flock(file, LOCK_SH), 0);
  EXPECT_THAT(remaining(), SizeIs(3));
  close(file);
  EXPECT_THAT(remaining(), SizeIs(2));
}

TEST_F(PosixAbandonedFiles, doNotIncludeOtherUsersFiles) {
  if (geteuid() != 0) GTEST_SKIP() << "only the superuser can create another user's file";
  ASSERT_EQ(chown(scratch_.path(abandon()).c_str(), unprivilegedUser, unprivilegedUser), 0);
  EXPECT_THAT(remaining(), SizeIs(3));
}

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
    EXPECT_THAT(namesIn(scratch_.path()), ElementsAre("Bookmarks.plist", "backup"));
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

TEST_F(PosixReplaceIfHolds, replacesTheExpectedContentAndKeepsTheMode) {
  chmod(file_.c_str(), 0640);
  EXPECT_EQ(outcome("old"), "replaced");
  EXPECT_EQ(contentOf(file_), "new");
  EXPECT_EQ(modeOf(file_), 0640U);
  EXPECT_THAT(names(), ElementsAre("Bookmarks.plist"));
}

TEST_F(PosixReplaceIfHolds, leavesOtherContent) {
  EXPECT_EQ(outcome("olb"), "not replaced");
  EXPECT_EQ(contentOf(file_), "old");
  EXPECT_THAT(names(), ElementsAre("Bookmarks.plist"));
}

TEST_F(PosixReplaceIfHolds, replacesTheSameBytesOfEverySize) {
  for (const std::size_t size : {std::size_t{0}, std::size_t{1}, block - 1, block, block + 1, 3 * block}) {
    makeFile(file_, patterned(size));
    EXPECT_EQ(outcome(patterned(size)), "replaced") << size;
    EXPECT_EQ(contentOf(file_), "new") << size;
  }
}

TEST_F(PosixReplaceIfHolds, noticesOneChangedByteOfTheSameDate) {
  const std::string old = patterned(2 * block + 100);
  for (const std::size_t place : {std::size_t{0}, block - 1, block, old.size() - 1}) {
    makeFile(file_, old);
    struct stat before {};
    ASSERT_EQ(stat(file_.c_str(), &before), 0);
    std::string changed = old;
    changed[place] = static_cast<char>(changed[place] ^ 1);
    makeFile(file_, changed);
    const std::array<timespec, 2> times{before.st_atim, before.st_mtim};
    ASSERT_EQ(utimensat(AT_FDCWD, file_.c_str(), times.data(), 0), 0);
    EXPECT_EQ(outcome(old), "not replaced") << place;
    EXPECT_TRUE(contentOf(file_) == changed) << place;
  }
}

TEST_F(PosixReplaceIfHolds, noticesAByteMoreOrLess) {
  for (const std::size_t size : {std::size_t{1}, block, 2 * block}) {
    makeFile(file_, patterned(size));
    EXPECT_EQ(outcome(patterned(size + 1)), "not replaced") << size;
    EXPECT_EQ(outcome(patterned(size - 1)), "not replaced") << size;
    EXPECT_EQ(outcome(""), "not replaced") << size;
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

TEST_F(PosixReplaceIfHolds, readsNothingBeyondTheExpectedBytes) {
  for (const std::size_t expected : {block - 1, block, block + 1, 2 * block}) {
    const std::string longer = patterned(expected + block);
    makeFile(file_, longer);
    EXPECT_EQ(inChildProcess([&] {
                const Bytes part = beforeInaccessiblePage(longer.substr(0, expected));
                return std::string(files_.replaceIfHolds(file_, part, bytes("new"), always).done ? "replaced"
                                                                                                 : "not replaced");
              }),
              "not replaced")
        << expected;
    EXPECT_TRUE(contentOf(file_) == longer) << expected;
  }
}

TEST_F(PosixReplaceIfHolds, noticesAChangeWhileTheNewFileIsWritten) {
  EXPECT_EQ(outcomeWhile([&] { makeFile(file_, "changed in place"); }), "not replaced");
  EXPECT_EQ(contentOf(file_), "changed in place");
}

TEST_F(PosixReplaceIfHolds, ignoresNewDatesOfTheSameBytes) {
  EXPECT_EQ(outcomeWhile([&] { makeFile(file_, "old"); }), "replaced");
  EXPECT_EQ(contentOf(file_), "new");
}

TEST_F(PosixReplaceIfHolds, doesNotRecreateARemovedFile) {
  const std::string gone =
      sentence(ENOENT, "The file “Bookmarks.plist” couldn’t be opened", "No such file or directory", file_);
  EXPECT_EQ(outcomeWhile([&] { std::filesystem::remove(file_); }), gone);
  EXPECT_THAT(names(), IsEmpty());
  EXPECT_EQ(outcome("old"),
            sentence(ENOENT, "The file “Bookmarks.plist” couldn’t be saved", "No such file or directory", file_));
}

TEST_F(PosixReplaceIfHolds, followsALink) {
  const std::string link = scratch_.path("link");
  std::filesystem::create_symlink(file_, link);
  EXPECT_TRUE(files_.replaceIfHolds(link, bytes("old"), bytes("new"), always).done);
  EXPECT_EQ(contentOf(file_), "new");
  EXPECT_TRUE(std::filesystem::is_symlink(link));
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
