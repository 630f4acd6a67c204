// The list of backups.
#include "engine/backups.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <limits>
#include <string>
#include <vector>

#include "engine/bookmark_file.h"
#include "platform/error.h"
#include "tests/support/binary_file.h"
#include "tests/support/bookmark_trees.h"
#include "tests/support/virtual_machine.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class BackupListTest : public testing::Test {
 protected:
  void put(const std::string& name, const std::string& content, const std::string& modified = "2026-09-21 10:00:00") {
    machine_.files.put(backupsFolder() + "/" + name, content);
    machine_.files.setModified(backupsFolder() + "/" + name, utc(modified));
  }

  static std::vector<std::string> names() {
    std::vector<std::string> names;
    for (const FileEntry& file : backupFiles(bookmarkFile())) names.push_back(file.name);
    return names;
  }

  // The number of bookmarks in the only backup.
  static std::optional<std::uint64_t> count() {
    const std::vector<Backup> backups = listBackups(bookmarkFile(), std::nullopt);
    EXPECT_EQ(backups.size(), 1U);
    return backups.front().bookmarks;
  }

  VirtualMachine machine_;
};

TEST_F(BackupListTest, isEmptyWithoutAFolder) {
  EXPECT_THAT(backupFiles(bookmarkFile()), IsEmpty());
  EXPECT_THAT(listBackups(bookmarkFile(), std::nullopt), IsEmpty());
}

TEST_F(BackupListTest, hasTheNewestFirst) {
  put("Bookmarks-B.plist", "", "2026-09-21 10:00:01");
  put("Bookmarks-C.plist", "", "2026-09-21 10:00:03");
  put("Bookmarks-D.plist", "", "2026-09-21 10:00:02");
  put("Bookmarks-A.plist", "", "2026-09-21 10:00:02");
  EXPECT_THAT(names(), ElementsAre("Bookmarks-C.plist", "Bookmarks-A.plist", "Bookmarks-D.plist", "Bookmarks-B.plist"));
}

TEST_F(BackupListTest, leavesOutFilesWithOtherNames) {
  for (const char* name : {"Bookmarks.plist", "bookmarks-A.plist", "Bookmarks-A.plist~", ".quillery-AbCdEf", "notes"})
    put(name, "");
  machine_.files.put(backupsFolder() + "/folder/Bookmarks-A.plist", "");
  EXPECT_THAT(names(), IsEmpty());
}

TEST_F(BackupListTest, listsNamesWithoutOpeningFiles) {
  put("Bookmarks-A.plist", "");
  backupFiles(bookmarkFile());
  EXPECT_THAT(machine_.journal.entries(), ElementsAre("files in " + backupsFolder()));
}

TEST_F(BackupListTest, hasTheSizeAndTimeOfEachBackup) {
  put("Bookmarks-A.plist", "12345", "2026-09-25 09:30:00");
  const Backup backup = listBackups(bookmarkFile(), std::nullopt).front();
  EXPECT_EQ(backup.file.size, 5U);
  EXPECT_EQ(utcText(backup.file.modified), "2026-09-25 09:30:00");
}

TEST_F(BackupListTest, marksBackupsWithTheCurrentBytes) {
  put("Bookmarks-A.plist", "old", "2026-09-21 10:00:01");
  put("Bookmarks-B.plist", "now", "2026-09-21 10:00:02");
  put("Bookmarks-C.plist", "now", "2026-09-21 10:00:03");
  const auto isCurrent = [](const std::optional<Bytes>& current) {
    std::vector<bool> answers;
    for (const Backup& backup : listBackups(bookmarkFile(), current)) answers.push_back(backup.isCurrent);
    return answers;
  };
  EXPECT_THAT(isCurrent(Bytes(std::string("now"))), ElementsAre(true, true, false));
  EXPECT_THAT(isCurrent(std::nullopt), ElementsAre(false, false, false));
}

TEST_F(BackupListTest, countsBookmarksAtEveryDepthAndNothingElse) {
  put("Bookmarks-A.plist",
      fileOf(rootNode({proxyNode(u"History"), leafNode(u"a"), folderNode(u"f", {leafNode(u"b"), folderNode(u"g", {})}),
                       folderNode(u"com.apple.ReadingList", {leafNode(u"c")})})));
  EXPECT_EQ(count(), 3U);
}

TEST_F(BackupListTest, countsSharedFoldersTwiceButWalksThemOnce) {
  BinaryFile file(2);
  std::uint32_t folder = file.folder("0", {file.leaf("z")});
  for (int level = 1; level <= 40; ++level) folder = file.folder(std::to_string(level), {folder, folder});
  put("Bookmarks-A.plist", std::string(file.bytes(folder).text()));
  EXPECT_EQ(count(), std::uint64_t{1} << 40);
}

TEST_F(BackupListTest, stopsCountingAtTheLargestNumber) {
  BinaryFile file(2);
  std::uint32_t folder = file.folder("0", {file.leaf("z")});
  for (int level = 1; level <= 70; ++level) folder = file.folder(std::to_string(level), {folder, folder});
  put("Bookmarks-A.plist", std::string(file.bytes(folder).text()));
  EXPECT_EQ(count(), std::numeric_limits<std::uint64_t>::max());
}

TEST_F(BackupListTest, listsDamagedBackupsAmongTheOthers) {
  put("Bookmarks-A.plist", "damaged", "2026-09-21 10:00:03");
  put("Bookmarks-B.plist", fileOf(PlistValue(1)), "2026-09-21 10:00:02");
  put("Bookmarks-C.plist", fileOf(rootNode({leafNode(u"a")})), "2026-09-21 10:00:01");
  const std::vector<Backup> backups = listBackups(bookmarkFile(), Bytes(std::string("damaged")));
  ASSERT_EQ(backups.size(), 3U);
  EXPECT_EQ(backups[0].bookmarks, std::nullopt);
  EXPECT_TRUE(backups[0].isCurrent) << "the bytes are compared even if they are damaged";
  EXPECT_EQ(backups[1].bookmarks, std::nullopt);
  EXPECT_EQ(backups[2].bookmarks, 1U);
}

TEST_F(BackupListTest, listsABackupThatCannotBeRead) {
  put("Bookmarks-A.plist", "a");
  machine_.files.failOn("read", EACCES);
  EXPECT_EQ(count(), std::nullopt);
}

TEST_F(BackupListTest, failsIfTheFolderCannotBeListed) {
  machine_.files.failOn("files in", EACCES);
  try {
    backupFiles(bookmarkFile());
    ADD_FAILURE() << "no error";
  } catch (const Error& error) {
    EXPECT_EQ(error.domain(), "POSIX");
    EXPECT_EQ(error.code(), EACCES);
  }
}

TEST(BackupsOfAnotherFile, haveAFolderNamedByItsPath) {
  const VirtualMachine machine;
  EXPECT_EQ(backupsFolderOf("/media/a b/Other.plist"), backupsFolder() + "/Other Files/media/a b/Other.plist");
  EXPECT_EQ(backupsFolderOf("/media/a b/./c/../Other.plist"), backupsFolderOf("/media/a b/Other.plist"));
}

TEST(BackupsOfAnotherFile, areNotThoseOfTheUsersOwn) {
  const VirtualMachine machine;
  EXPECT_EQ(backupsFolderOf(bookmarkFile()), backupsFolder());
  EXPECT_EQ(backupsFolderOf("/home/user/folder/../Library/Safari/Bookmarks.plist"), backupsFolder());
  EXPECT_TRUE(isBackupOf(backupsFolder() + "/Bookmarks-A.plist", bookmarkFile()));
  EXPECT_TRUE(isBackupOf(backupsFolderOf("/other") + "/Bookmarks-A.plist", "/other"));
  EXPECT_FALSE(isBackupOf(backupsFolderOf("/other") + "/Bookmarks-A.plist", bookmarkFile()));
  EXPECT_FALSE(isBackupOf(backupsFolder() + "/Bookmarks-A.plist", "/other"));
}

}  // namespace
