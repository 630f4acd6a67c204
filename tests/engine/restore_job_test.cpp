// The restore job: its steps, its errors, and what is on the disk afterwards.
#include "engine/restore_job.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "engine/backups.h"
#include "engine/sort_job.h"
#include "tests/support/bookmark_places.h"
#include "tests/support/bookmark_trees.h"
#include "tests/support/virtual_machine.h"

namespace {

using testing::ElementsAreArray;
using testing::HasSubstr;

const std::string backup = backups + "/Bookmarks-old.plist";
const std::string newBackup = backups + "/Bookmarks-" + VirtualProcesses::uuid(1) + ".plist";

// The steps in order; a restore that fails stops after one of them.
const Entries upToTheFolder = {"files in " + bookmarkFolder};
const Entries cleaning = {"remove abandoned " + bookmarks, "remove abandoned " + backups + "/"};
const Entries upToReading =
    upToTheFolder + Entries{"running? com.apple.Safari"} + cleaning + Entries{"read " + bookmarks};
const Entries upToTheBackup = upToReading + Entries{"read " + backup};
const Entries upToParsing = upToTheBackup + Entries{"parse"};
const Entries upToBackingUp =
    upToParsing + Entries{"create folder " + backups + " 0700", "uuid", "write new " + newBackup};
const Entries upToTheMode = upToBackingUp + Entries{"set mode " + newBackup + " 0600"};
const Entries upToTheLastQuestion = upToTheMode + Entries{"write beside " + bookmarks, "running? com.apple.Safari"};
const Entries upToComparing = upToTheLastQuestion + Entries{"holds " + bookmarks};
const Entries upToWriting = upToComparing + Entries{"write atomically " + bookmarks};

class RestoreJobTest : public testing::Test {
 protected:
  RestoreJobTest() {
    machine_.files.put(bookmarks, present_, 0640);
    machine_.files.put(backup, old_, 0600);
    filesAtFirst_ = machine_.files.files();
  }

  static RestoreOutcome restore(const std::string& source = backup) {
    return restoreBookmarkFile(source, bookmarks).outcome;
  }

  void expectSteps(const Entries& steps) const { EXPECT_THAT(machine_.journal.entries(), ElementsAreArray(steps)); }

  // Expects a restore that fails after these steps with an error whose description contains this text. Returns the
  // domain and the code of the error.
  std::pair<std::string, int> expectFailure(const Entries& steps, const std::string& description) {
    try {
      restore();
    } catch (const Error& error) {
      EXPECT_THAT(error.description(), HasSubstr(description));
      expectSteps(steps);
      return {error.domain(), error.code()};
    }
    ADD_FAILURE() << "no error";
    return {};
  }

  static std::pair<std::string, int> sorterCode(int code) { return {"Sorter", code}; }

  void expectDiskUntouched() const { EXPECT_EQ(machine_.files.files(), filesAtFirst_); }

  // Expects an unchanged bookmark file and one more backup of it.
  void expectOnlyABackup() const {
    auto wanted = filesAtFirst_;
    wanted[newBackup] = {present_, 0600};
    EXPECT_EQ(machine_.files.files(), wanted);
  }

  VirtualMachine machine_;
  // In different formats; the backup's bytes are not what the program would write.
  const std::string present_ = fileOf(rootNode({folderNode(u"Bar", {leafNode(u"a"), leafNode(u"b")})}));
  const std::string old_ =
      "<?xml version=\"1.0\"?><plist><!-- as it was --><dict><key>Children</key><array/></dict></plist>";
  std::map<std::string, VirtualFileSystem::File> filesAtFirst_;
};

TEST_F(RestoreJobTest, restoresTheExactBytesStepByStep) {
  const RestoreResult result = restoreBookmarkFile(backup, bookmarks);
  EXPECT_EQ(result.outcome, RestoreOutcome::restored);
  ASSERT_TRUE(result.rewrite);
  EXPECT_EQ(result.rewrite->backup, newBackup);
  expectSteps(upToWriting);
  EXPECT_EQ(machine_.files.content(bookmarks), old_);
  EXPECT_EQ(machine_.files.mode(bookmarks), 0640U);
  EXPECT_EQ(machine_.files.content(newBackup), present_);
  EXPECT_EQ(machine_.files.mode(newBackup), 0600U);
  EXPECT_EQ(machine_.files.content(backup), old_) << "the backup is kept";
}

TEST_F(RestoreJobTest, canBeUndoneByRestoringItsOwnBackup) {
  restore();
  EXPECT_EQ(restore(newBackup), RestoreOutcome::restored);
  EXPECT_EQ(machine_.files.content(bookmarks), present_);
  EXPECT_EQ(machine_.files.files().size(), 4U) << "the second restore made a backup too";
}

TEST_F(RestoreJobTest, undoesASort) {
  const std::string unsorted = fileOf(rootNode({folderNode(u"Bar", {leafNode(u"z"), leafNode(u"a")})}));
  machine_.files.put(bookmarks, unsorted);
  ASSERT_TRUE(sortBookmarkFile(bookmarks));
  ASSERT_NE(machine_.files.content(bookmarks), unsorted);
  EXPECT_EQ(restore(newBackup), RestoreOutcome::restored);
  EXPECT_EQ(machine_.files.content(bookmarks), unsorted);
}

TEST_F(RestoreJobTest, changesNothingIfTheBytesAreTheSame) {
  machine_.files.put(bookmarks, old_);
  filesAtFirst_ = machine_.files.files();
  const RestoreResult result = restoreBookmarkFile(backup, bookmarks);
  EXPECT_EQ(result.outcome, RestoreOutcome::alreadyThere);
  EXPECT_EQ(result.rewrite, std::nullopt);
  expectSteps(upToParsing);
  expectDiskUntouched();
}

TEST_F(RestoreJobTest, replacesAnotherFileIfOneIsNamed) {
  const std::string other = "/home/user/Other.plist";
  machine_.files.put(other, "anything");
  EXPECT_EQ(restoreBookmarkFile(backup, other).outcome, RestoreOutcome::restored);
  EXPECT_EQ(machine_.files.content(other), old_);
  EXPECT_EQ(
      machine_.files.content(backups + "/Other Files" + other + "/Bookmarks-" + VirtualProcesses::uuid(1) + ".plist"),
      "anything");
  EXPECT_EQ(machine_.files.content(bookmarks), present_);
}

TEST_F(RestoreJobTest, replacesADamagedFile) {
  machine_.files.put(bookmarks, "bplist00 and no more");
  EXPECT_EQ(restore(), RestoreOutcome::restored);
  EXPECT_EQ(machine_.files.content(bookmarks), old_);
  EXPECT_EQ(machine_.files.content(newBackup), "bplist00 and no more");
}

// Safari

TEST_F(RestoreJobTest, readsNothingWhileSafariRuns) {
  machine_.applications.start(safari);
  EXPECT_EQ(expectFailure(upToTheFolder + Entries{"running? com.apple.Safari"}, "Quit Safari first"), sorterCode(1));
  expectDiskUntouched();
}

TEST_F(RestoreJobTest, leavesTheFileAndABackupIfSafariStartsMeanwhile) {
  machine_.journal.before(
      "running?", [&](const auto&) { machine_.applications.start(safari); }, 2);
  EXPECT_EQ(expectFailure(upToTheLastQuestion, "Nothing was overwritten"), sorterCode(3));
  expectOnlyABackup();
}

TEST_F(RestoreJobTest, leavesAFileThatChangedMeanwhile) {
  std::string changed = present_;
  changed.back() = static_cast<char>(changed.back() ^ 1);
  machine_.journal.before("holds", [&](const auto&) { machine_.files.put(bookmarks, changed); });
  EXPECT_EQ(expectFailure(upToComparing, "Safari or bookmark syncing changed the file."), sorterCode(3));
  EXPECT_EQ(machine_.files.content(bookmarks), changed);
  EXPECT_EQ(machine_.files.content(newBackup), present_);
}

// Unfit backups

TEST_F(RestoreJobTest, refusesAMissingBackup) {
  machine_.files.remove(backup);
  filesAtFirst_ = machine_.files.files();
  expectFailure(upToTheBackup, "The file “Bookmarks-old.plist” couldn’t be opened");
  expectDiskUntouched();
}

TEST_F(RestoreJobTest, refusesABackupThatCannotBeParsed) {
  machine_.files.put(backup, "bplist00");
  filesAtFirst_ = machine_.files.files();
  expectFailure(upToParsing, "");
  expectDiskUntouched();
}

TEST_F(RestoreJobTest, refusesABackupThatIsNoBookmarkTree) {
  for (const PlistValue& value :
       {PlistValue(u"a string"), PlistValue::dictionary({}), PlistValue::dictionary({{u"Title", u"a"}}),
        PlistValue::dictionary({{u"Children", PlistValue::array({u"a string"})}})}) {
    machine_.files.put(backup, fileOf(value));
    filesAtFirst_ = machine_.files.files();
    machine_.journal.clear();
    EXPECT_EQ(expectFailure(upToParsing, "Unrecognised Safari bookmark format. No changes made."), sorterCode(2));
    expectDiskUntouched();
  }
}

// A missing bookmark file

const Entries upToTheQuestionWithoutFile =
    upToTheFolder + Entries{"read " + backup, "parse", "running? com.apple.Safari"};

TEST_F(RestoreJobTest, writesAMissingFile) {
  machine_.files.remove(bookmarks);
  const RestoreResult result = restoreBookmarkFile(backup, bookmarks);
  EXPECT_EQ(result.outcome, RestoreOutcome::restored);
  EXPECT_EQ(result.rewrite, std::nullopt) << "no backup of a missing file";
  expectSteps(upToTheQuestionWithoutFile + cleaning + Entries{"write new " + bookmarks});
  EXPECT_EQ(machine_.files.content(bookmarks), old_);
  EXPECT_EQ(machine_.files.files().size(), 2U);
}

TEST_F(RestoreJobTest, doesNotOverwriteAFileCreatedMeanwhile) {
  machine_.files.remove(bookmarks);
  machine_.journal.before("write new", [&](const auto&) { machine_.files.put(bookmarks, "new"); });
  expectFailure(upToTheQuestionWithoutFile + cleaning + Entries{"write new " + bookmarks}, "File exists");
  EXPECT_EQ(machine_.files.content(bookmarks), "new");
}

TEST_F(RestoreJobTest, doesNotWriteAMissingFileOnceSafariRuns) {
  machine_.files.remove(bookmarks);
  machine_.journal.after("parse", [&](const auto&) { machine_.applications.start(safari); });
  EXPECT_EQ(expectFailure(upToTheQuestionWithoutFile, "Quit Safari first"), sorterCode(1));
  EXPECT_FALSE(machine_.files.files().contains(bookmarks));
}

TEST_F(RestoreJobTest, failsIfTheFilesFolderCannotBeListed) {
  machine_.files.failOn("files in", EACCES);
  expectFailure(upToTheFolder, "Permission denied");
  expectDiskUntouched();
}

TEST_F(RestoreJobTest, replacesAFileInTheRootFolder) {
  machine_.files.put("/file", present_);
  const RestoreResult result = restoreBookmarkFile(backup, "/file");
  EXPECT_EQ(result.outcome, RestoreOutcome::restored);
  EXPECT_EQ(machine_.files.content("/file"), old_);
  EXPECT_EQ(machine_.files.content(result.rewrite.value().backup), present_);
}

// Failing steps

TEST_F(RestoreJobTest, leavesAllFilesIfTheFileCannotBeRead) {
  machine_.files.failOn("read", EACCES);
  expectFailure(upToReading, "Permission denied");
  expectDiskUntouched();
}

TEST_F(RestoreJobTest, leavesAllFilesIfTheBackupsFolderCannotBeCreated) {
  machine_.files.failOn("create folder", EROFS);
  expectFailure(upToParsing + Entries{"create folder " + backups + " 0700"}, "Read-only file system");
  expectDiskUntouched();
}

TEST_F(RestoreJobTest, leavesAllFilesIfNoBackupCanBeWritten) {
  machine_.files.failOn("write new", ENOSPC);
  expectFailure(upToBackingUp, "No space left on device");
  expectDiskUntouched();
}

TEST_F(RestoreJobTest, leavesTheFileIfTheModeOfTheBackupCannotBeSet) {
  machine_.files.failOn("set mode", EPERM);
  expectFailure(upToTheMode, "Operation not permitted");
  EXPECT_EQ(machine_.files.content(bookmarks), present_);
}

TEST_F(RestoreJobTest, leavesTheOldFileWholeIfTheLastWriteFails) {
  machine_.files.failOn("write atomically", EIO);
  expectFailure(upToWriting, "Input/output error");
  expectOnlyABackup();
}

TEST_F(RestoreJobTest, worksTheNextTimeAfterAFailure) {
  machine_.files.failOn("write atomically", EIO);
  EXPECT_THROW(restore(), Error);
  EXPECT_EQ(restore(), RestoreOutcome::restored);
  EXPECT_EQ(machine_.files.content(bookmarks), old_);
}

}  // namespace
