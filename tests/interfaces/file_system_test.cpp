// Files and folders: what every implementation promises.
#include "platform/file_system.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <algorithm>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "platform/error.h"
#include "tests/interfaces/differences.h"
#include "tests/interfaces/implementations.h"
#include "tests/support/file_outcomes.h"

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

class FileSystemTest : public InterfaceTest<Implementation<FileSystemSubject>> {
 protected:
  std::string path(const std::string& name) const { return subject_->folder() + "/" + name; }
  void put(const std::string& content, unsigned mode = 0644) { subject_->put(file_, content, mode); }
  std::string content() const { return subject_->content(file_); }

  // Expects an error whose description has the path.
  static void expectError(const std::string& path, const std::function<void()>& operation) {
    try {
      operation();
      ADD_FAILURE() << "no error for " << path;
    } catch (const Error& error) {
      EXPECT_THAT(error.description(), HasSubstr(path));
    }
  }

  // Replaces the file if it has this content, and asks `mayReplace` first.
  Replacement replaceIf(
      const std::string& expected, const std::function<bool()>& mayReplace = [] { return true; }) {
    return files_.replaceIfHolds(file_, bytes(expected), bytes("new"), mayReplace);
  }

  const std::unique_ptr<FileSystemSubject> subject_ = GetParam().make();
  FileSystem& files_ = subject_->files();
  const std::string file_ = path("Bookmarks.plist");
  const std::string missing_ = path("missing/Bookmarks.plist");
};

INSTANTIATE_TEST_SUITE_P(Implementations, FileSystemTest, testing::ValuesIn(fileSystems()), implementationName);

TEST_P(FileSystemTest, homeFolderIsAbsoluteWithoutASlashAtItsEnd) {
  const std::string home = files_.homeFolder();
  EXPECT_TRUE(home.empty() || home.starts_with('/')) << home;
  EXPECT_FALSE(home.ends_with('/')) << home;
}

TEST_P(FileSystemTest, resolvesAllPathsOfAFileAlike) {
  put("");
  files_.createFolder(path("folder"), defaultAttributes);
  EXPECT_EQ(files_.resolved(path("./Bookmarks.plist")), files_.resolved(file_));
  EXPECT_EQ(files_.resolved(path("folder/../Bookmarks.plist")), files_.resolved(file_));
  EXPECT_NE(files_.resolved(path("other.plist")), files_.resolved(file_));
}

TEST_P(FileSystemTest, resolvesThePathOfAMissingFile) {
  EXPECT_EQ(files_.resolved(missing_), files_.resolved(path("missing")) + "/Bookmarks.plist");
}

// Reading

TEST_P(FileSystemTest, readsEveryByte) {
  for (const std::size_t size : {std::size_t{0}, std::size_t{1}, std::size_t{4095}, std::size_t{4096}, fileBlock,
                                 (std::size_t{9} << 20) + fileBlock}) {
    put(patterned(size));
    EXPECT_TRUE(files_.read(file_).text() == patterned(size)) << size;
  }
}

TEST_P(FileSystemTest, readsContentThatOutlivesTheFile) {
  put("old");
  const Bytes old = files_.read(file_);
  put("");
  subject_->remove(file_);
  EXPECT_EQ(old.text(), "old");
}

TEST_P(FileSystemTest, refusesToReadWhatIsNoFile) {
  expectError(file_, [&] { files_.read(file_); });
  expectError(missing_, [&] { files_.read(missing_); });
  expectError(subject_->folder(), [&] { files_.read(subject_->folder()); });
}

// Listing a folder

TEST_P(FileSystemTest, listsFilesButNoFolders) {
  put("12345");
  subject_->put(path(".hidden"), "", 0600);
  files_.createFolder(path("folder"), 0700);
  subject_->put(path("folder/inner"), "", 0600);
  std::vector<FileEntry> files = files_.filesIn(subject_->folder());
  std::ranges::sort(files, {}, &FileEntry::name);
  ASSERT_EQ(files.size(), 2U);
  EXPECT_EQ(files[0].name, ".hidden");
  EXPECT_EQ(files[0].size, 0U);
  EXPECT_EQ(files[1].name, "Bookmarks.plist");
  EXPECT_EQ(files[1].size, 5U);
}

TEST_P(FileSystemTest, listsNoneInAFolderThatDoesNotExist) {
  EXPECT_THAT(files_.filesIn(path("missing")), IsEmpty());
  EXPECT_THAT(files_.filesIn(path("missing/too")), IsEmpty());
  EXPECT_THAT(files_.filesIn(subject_->folder()), IsEmpty());
}

TEST_P(FileSystemTest, refusesToListAFile) {
  put("");
  expectError(file_, [&] { files_.filesIn(file_); });
}

// Creating folders

TEST_P(FileSystemTest, createsEachFolderWithExactlyTheMode) {
  files_.createFolder(path("one/two/three"), 0710);
  for (const char* name : {"one", "one/two", "one/two/three"}) EXPECT_EQ(subject_->mode(path(name)), 0710U) << name;
}

TEST_P(FileSystemTest, keepsTheModeOfFoldersThatExist) {
  files_.createFolder(path("one"), 0755);
  files_.createFolder(path("one/two"), 0700);
  files_.createFolder(path("one"), 0700);
  files_.createFolder(path("one/two"), defaultAttributes);
  EXPECT_EQ(subject_->mode(path("one")), 0755U);
  EXPECT_EQ(subject_->mode(path("one/two")), 0700U);
}

TEST_P(FileSystemTest, refusesToCreateAFolderInPlaceOfAFile) {
  put("");
  expectError(file_, [&] { files_.createFolder(file_, 0700); });
  expectError(file_, [&] { files_.createFolder(file_ + "/two", 0700); });
  EXPECT_EQ(content(), "");
}

// Writing new files

TEST_P(FileSystemTest, writesEveryByteOfANewFile) {
  const std::string content = patterned((9 << 20) + 1);
  files_.writeNew(file_, bytes(content));
  EXPECT_TRUE(this->content() == content);
  files_.writeNew(path("empty"), {});
  EXPECT_EQ(subject_->content(path("empty")), "");
  EXPECT_THAT(subject_->names(), ElementsAre("Bookmarks.plist", "empty"));
}

TEST_P(FileSystemTest, writesNoNewFileOverAnotherOne) {
  put("there before");
  expectError(file_, [&] { files_.writeNew(file_, bytes("new")); });
  files_.createFolder(path("folder"), 0700);
  expectError(path("folder"), [&] { files_.writeNew(path("folder"), bytes("new")); });
  EXPECT_EQ(content(), "there before");
}

TEST_P(FileSystemTest, writesNothingIntoAMissingFolder) {
  expectError(missing_, [&] { files_.writeNew(missing_, bytes("new")); });
  expectError(missing_, [&] { files_.writeAtomically(missing_, bytes("new")); });
  EXPECT_THAT(subject_->names(), IsEmpty());
}

// Permission bits

TEST_P(FileSystemTest, setsExactlyTheMode) {
  put("");
  for (const unsigned mode : {0600U, 0644U, 0640U}) {
    files_.setMode(file_, mode);
    EXPECT_EQ(subject_->mode(file_), mode);
  }
}

TEST_P(FileSystemTest, refusesToSetTheModeOfAMissingFile) {
  expectError(file_, [&] { files_.setMode(file_, 0600); });
}

// Replacing a file

TEST_P(FileSystemTest, replacesTheContentAndKeepsTheMode) {
  put(patterned(5000), 0640);
  files_.writeAtomically(file_, bytes("short"));
  EXPECT_EQ(content(), "short");
  EXPECT_EQ(subject_->mode(file_), 0640U);
  files_.writeAtomically(file_, bytes(patterned(9 << 20)));
  EXPECT_TRUE(content() == patterned(9 << 20));
  EXPECT_THAT(subject_->names(), ElementsAre("Bookmarks.plist"));
}

TEST_P(FileSystemTest, createsAFileThatItWouldReplace) {
  files_.writeAtomically(file_, bytes("new"));
  EXPECT_EQ(content(), "new");
}

TEST_P(FileSystemTest, refusesToReplaceAFolder) {
  files_.createFolder(file_, 0700);
  expectError(file_, [&] { files_.writeAtomically(file_, bytes("new")); });
  EXPECT_THAT(files_.filesIn(subject_->folder()), IsEmpty());
}

// Replacing an unchanged file

TEST_P(FileSystemTest, replacesAFileByPiecesOfAnySize) {
  put("old");
  BytePieces pieces;
  for (const std::size_t size : {1U, 1U << 20, 3U, (3U << 20) - 7, 500'000U, (1U << 20) - 1})
    pieces.append(bytes(patterned(size)));
  EXPECT_TRUE(files_.replaceIfHolds(file_, bytes("old"), pieces, [] { return true; }).done);
  EXPECT_TRUE(content() == pieces.joined().text());
  EXPECT_TRUE(files_.replaceIfHolds(file_, pieces.joined(), {}, [] { return true; }).done);
  EXPECT_EQ(content(), "");
}

TEST_P(FileSystemTest, replacesTheExpectedContentOfEverySize) {
  for (const std::size_t size :
       {std::size_t{0}, std::size_t{1}, fileBlock - 1, fileBlock, fileBlock + 1, 3 * fileBlock}) {
    put(patterned(size), 0640);
    const Replacement replacement = replaceIf(patterned(size));
    EXPECT_TRUE(replacement.done) << size;
    EXPECT_FALSE(replacement.changedLate);
    EXPECT_FALSE(replacement.lateBytes);
    EXPECT_EQ(content(), "new") << size;
    EXPECT_EQ(subject_->mode(file_), 0640U);
  }
  EXPECT_THAT(subject_->names(), ElementsAre("Bookmarks.plist"));
}

TEST_P(FileSystemTest, leavesOtherContent) {
  const std::string old = patterned(2 * fileBlock);
  std::string changed = old;
  changed.back() = static_cast<char>(changed.back() ^ 1);
  for (const std::string& expected : {changed, old + "a", old.substr(1), std::string()}) {
    put(old);
    EXPECT_FALSE(replaceIf(expected).done);
    EXPECT_TRUE(content() == old);
  }
  EXPECT_THAT(subject_->names(), ElementsAre("Bookmarks.plist"));
}

TEST_P(FileSystemTest, leavesAFileThatMayNotBeReplaced) {
  put("old");
  EXPECT_FALSE(replaceIf("old", [] { return false; }).done);
  EXPECT_EQ(content(), "old");
  EXPECT_THAT(subject_->names(), ElementsAre("Bookmarks.plist"));
}

TEST_P(FileSystemTest, comparesAfterItHasAsked) {
  put("old");
  EXPECT_FALSE(replaceIf("old", [&] {
                 put("changed");
                 return true;
               }).done);
  EXPECT_EQ(content(), "changed");
}

TEST_P(FileSystemTest, passesOnWhatTheQuestionThrows) {
  put("old");
  EXPECT_THROW(replaceIf("old", []() -> bool { throw std::domain_error("no answer"); }), std::domain_error);
  EXPECT_EQ(content(), "old");
  EXPECT_THAT(subject_->names(), ElementsAre("Bookmarks.plist"));
}

TEST_P(FileSystemTest, doesNotRecreateARemovedFile) {
  put("old");
  expectError(file_, [&] {
    replaceIf("old", [&] {
      subject_->remove(file_);
      return true;
    });
  });
  expectError(file_, [&] { replaceIf("old"); });
  EXPECT_THAT(subject_->names(), IsEmpty());
}

// Abandoned files

TEST_P(FileSystemTest, removesNoFileThatIsNotAbandoned) {
  put("old");
  subject_->put(path("backup"), "backup", 0600);
  files_.removeAbandonedFiles(file_, {path("backup")});
  files_.removeAbandonedFiles(missing_, {});
  EXPECT_THAT(subject_->names(), ElementsAre("Bookmarks.plist", "backup"));
}

// The umask and symbolic links, which only real file systems have

class RealFilesTest : public FileSystemTest {
 protected:
  void link(const std::string& target, const std::string& name) { std::filesystem::create_symlink(target, path(name)); }
  const std::string link_ = path("link");
};

INSTANTIATE_TEST_SUITE_P(Implementations, RealFilesTest, testing::Values(nativeFileSystem()), implementationName);

TEST_P(RealFilesTest, getTheModeThatTheUmaskLeaves) {
  for (const unsigned mask : {0022U, 0077U}) {
    const UmaskScope scope(mask);
    const std::string created = path(std::to_string(mask));
    files_.writeAtomically(created, bytes("new"));
    EXPECT_EQ(subject_->mode(created), 0666U & ~mask);
    files_.createFolder(created + " folder", defaultAttributes);
    EXPECT_EQ(subject_->mode(created + " folder"), 0777U & ~mask);
  }
}

TEST_P(RealFilesTest, areReadThroughALink) {
  put("content");
  link("Bookmarks.plist", "link");
  EXPECT_EQ(files_.read(link_).text(), "content");
}

TEST_P(RealFilesTest, areListedIfALinkLeadsToThem) {
  put("123");
  files_.createFolder(path("folder"), 0700);
  link("../Bookmarks.plist", "folder/link");
  link("nowhere", "folder/broken");
  link(".", "folder/itself");
  const std::vector<FileEntry> files = files_.filesIn(path("folder"));
  ASSERT_EQ(files.size(), 1U);
  EXPECT_EQ(files[0].name, "link");
  EXPECT_EQ(files[0].size, 3U);
}

TEST_P(RealFilesTest, areReplacedWithoutTheLinksToThem) {
  put("old", 0640);
  link("Bookmarks.plist", "link");
  files_.writeAtomically(link_, bytes("new"));
  EXPECT_TRUE(std::filesystem::is_symlink(link_));
  EXPECT_EQ(content(), "new");
  EXPECT_EQ(subject_->mode(file_), 0640U);
  EXPECT_TRUE(files_.replaceIfHolds(link_, bytes("new"), bytes("newer"), [] { return true; }).done);
  EXPECT_TRUE(std::filesystem::is_symlink(link_));
  EXPECT_EQ(content(), "newer");
}

TEST_P(RealFilesTest, areNotCreatedInPlaceOfALink) {
  link("elsewhere", "link");
  expectError(link_, [&] { files_.writeNew(link_, bytes("new")); });
  EXPECT_THAT(subject_->names(), ElementsAre("link"));
}

}  // namespace
