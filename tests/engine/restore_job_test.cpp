// Bringing a backup back, on a virtual machine: what is read, written and said, in which order, and what is on the disk
// afterwards.
#include "engine/restore_job.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <map>
#include <string>
#include <vector>

#include "app/alert.h"
#include "engine/backups.h"
#include "engine/sort_job.h"
#include "tests/support/bookmark_places.h"
#include "tests/support/bookmark_trees.h"
#include "tests/support/virtual_machine.h"

namespace {

using testing::AllOf;
using testing::ElementsAreArray;
using testing::EndsWith;
using testing::HasSubstr;

const std::string backup = backups + "/Bookmarks-old.plist";
const std::string newBackup = backups + "/Bookmarks-" + VirtualProcesses::uuid(1) + ".plist";

const std::string restoredText =
    "Bookmarks restored: Your bookmarks are as they were when the backup was made. You can reopen Safari.";

// The operations in their order; a run that goes wrong gets as far as some of them.
const Entries upToTheQuestion = {"running? com.apple.Safari"};
const Entries upToTheFolder = upToTheQuestion + Entries{"files in " + bookmarkFolder};
const Entries upToReading = upToTheFolder + Entries{"running? com.apple.Safari", "read " + bookmarks};
const Entries upToTheBackup = upToReading + Entries{"read " + backup};
const Entries upToParsing = upToTheBackup + Entries{"parse"};
const Entries upToBackingUp =
    upToParsing + Entries{"create folder " + backups + " 0700", "uuid", "write new " + newBackup};
const Entries upToTheMode = upToBackingUp + Entries{"set mode " + newBackup + " 0600"};
const Entries upToTheLastQuestion = upToTheMode + Entries{"running? com.apple.Safari"};
const Entries upToComparing = upToTheLastQuestion + Entries{"holds " + bookmarks};
const Entries upToWriting = upToComparing + Entries{"write atomically " + bookmarks};

class RestoreJobTest : public testing::Test {
 protected:
  RestoreJobTest() {
    machine_.files.put(bookmarks, present_, 0640);
    machine_.files.put(backup, old_, 0600);
    filesAtFirst_ = machine_.files.files();
    automatic = true;
  }

  // The journal: these operations, and then what is said.
  void expectDone(const Entries& operations, const std::string& said) const {
    EXPECT_THAT(machine_.journal.entries(), ElementsAreArray(operations + Entries{"printed " + said + "\n"}));
  }

  // A restore that fails after these operations, with words that hold these.
  void expectFailure(const Entries& operations, const std::string& description) {
    const RestoreResult result = performRestore(backup);
    EXPECT_EQ(result.outcome, RestoreOutcome::failed);
    EXPECT_THAT(result.message, AllOf(HasSubstr(description), EndsWith(accessHint)));
    expectDone(operations, "Bookmarks could not be restored: " + result.message);
  }

  void expectDiskUntouched() const { EXPECT_EQ(machine_.files.files(), filesAtFirst_); }

  // The bookmark file is as it was, and there is one more backup of it.
  void expectOnlyABackup() const {
    auto wanted = filesAtFirst_;
    wanted[newBackup] = {present_, 0600};
    EXPECT_EQ(machine_.files.files(), wanted);
  }

  VirtualMachine machine_;
  // In different formats, and not in the order in which either is written.
  const std::string present_ = fileOf(rootNode({folderNode(u"Bar", {leafNode(u"a"), leafNode(u"b")})}));
  const std::string old_ =
      "<?xml version=\"1.0\"?><plist><!-- as it was --><dict><key>Children</key><array/></dict></plist>";
  std::map<std::string, VirtualFileSystem::File> filesAtFirst_;
};

TEST_F(RestoreJobTest, bringsTheExactBytesBackInItsOrderOfSteps) {
  EXPECT_EQ(performRestore(backup).outcome, RestoreOutcome::restored);
  expectDone(upToWriting, restoredText + "\n\nBackup: " + newBackup);
  EXPECT_EQ(machine_.files.content(bookmarks), old_);
  EXPECT_EQ(machine_.files.mode(bookmarks), 0640U);
  EXPECT_EQ(machine_.files.content(newBackup), present_);
  EXPECT_EQ(machine_.files.mode(newBackup), 0600U);
  EXPECT_EQ(machine_.files.content(backup), old_) << "the backup stays";
}

TEST_F(RestoreJobTest, canBeUndoneByARestoreOfItsOwnBackup) {
  performRestore(backup);
  EXPECT_EQ(performRestore(newBackup).outcome, RestoreOutcome::restored);
  EXPECT_EQ(machine_.files.content(bookmarks), present_);
  EXPECT_EQ(machine_.files.files().size(), 4U) << "and that made a backup, too";
}

TEST_F(RestoreJobTest, undoesASort) {
  const std::string unsorted = fileOf(rootNode({folderNode(u"Bar", {leafNode(u"z"), leafNode(u"a")})}));
  machine_.files.put(bookmarks, unsorted);
  ASSERT_EQ(performSort().outcome, SortOutcome::sorted);
  ASSERT_NE(machine_.files.content(bookmarks), unsorted);
  EXPECT_EQ(performRestore(newBackup).outcome, RestoreOutcome::restored);
  EXPECT_EQ(machine_.files.content(bookmarks), unsorted);
}

TEST_F(RestoreJobTest, changesNothingWhereTheBytesAreTheSame) {
  machine_.files.put(bookmarks, old_);
  filesAtFirst_ = machine_.files.files();
  EXPECT_EQ(performRestore(backup).outcome, RestoreOutcome::alreadyThere);
  expectDone(upToParsing, "Already restored: Your Safari bookmarks are already the same as this backup.");
  expectDiskUntouched();
}

TEST_F(RestoreJobTest, replacesAnotherFileIfOneIsNamed) {
  const std::string other = "/home/user/Other.plist";
  machine_.files.put(other, "anything");
  EXPECT_EQ(performRestore(backup, other).outcome, RestoreOutcome::restored);
  EXPECT_EQ(machine_.files.content(other), old_);
  EXPECT_EQ(machine_.files.content(newBackup), "anything") << "beside the user's own backups";
  EXPECT_EQ(machine_.files.content(bookmarks), present_);
}

TEST_F(RestoreJobTest, replacesAFileThatIsDamaged) {
  machine_.files.put(bookmarks, "bplist00 and no more");
  EXPECT_EQ(performRestore(backup).outcome, RestoreOutcome::restored);
  EXPECT_EQ(machine_.files.content(bookmarks), old_);
  EXPECT_EQ(machine_.files.content(newBackup), "bplist00 and no more");
}

// Safari

TEST_F(RestoreJobTest, readsNothingAndSaysNothingWhileSafariRuns) {
  machine_.applications.start(safari);
  EXPECT_EQ(performRestore(backup).outcome, RestoreOutcome::safariRunning);
  EXPECT_THAT(machine_.journal.entries(), ElementsAreArray(upToTheQuestion));
  expectDiskUntouched();
}

TEST_F(RestoreJobTest, readsNothingIfSafariStartsJustThen) {
  machine_.journal.before(
      "running?", [&](const auto&) { machine_.applications.start(safari); }, 2);
  expectFailure(upToTheFolder + upToTheQuestion, "Quit Safari first");
  expectDiskUntouched();
}

TEST_F(RestoreJobTest, leavesTheFileAndABackupIfSafariStartsMeanwhile) {
  machine_.journal.before(
      "running?", [&](const auto&) { machine_.applications.start(safari); }, 3);
  expectFailure(upToTheLastQuestion, "Nothing was overwritten");
  expectOnlyABackup();
}

TEST_F(RestoreJobTest, leavesAFileThatChangedMeanwhile) {
  std::string changed = present_;
  changed.back() = static_cast<char>(changed.back() ^ 1);
  machine_.journal.before("holds", [&](const auto&) { machine_.files.put(bookmarks, changed); });
  expectFailure(upToComparing, "Safari or bookmark syncing changed the file.");
  EXPECT_EQ(machine_.files.content(bookmarks), changed);
  EXPECT_EQ(machine_.files.content(newBackup), present_);
}

// What is no backup

TEST_F(RestoreJobTest, refusesABackupThatIsNotThere) {
  machine_.files.remove(backup);
  filesAtFirst_ = machine_.files.files();
  expectFailure(upToTheBackup, "The file “Bookmarks-old.plist” couldn’t be opened");
  expectDiskUntouched();
}

TEST_F(RestoreJobTest, refusesWhatCannotBeParsed) {
  machine_.files.put(backup, "bplist00");
  filesAtFirst_ = machine_.files.files();
  expectFailure(upToParsing, "");
  expectDiskUntouched();
}

TEST_F(RestoreJobTest, refusesWhatIsNoBookmarkTree) {
  for (const PlistValue& value :
       {PlistValue(u"a string"), PlistValue::dictionary({}), PlistValue::dictionary({{u"Title", u"a"}}),
        PlistValue::dictionary({{u"Children", PlistValue::array({u"a string"})}})}) {
    machine_.files.put(backup, fileOf(value));
    filesAtFirst_ = machine_.files.files();
    machine_.journal.clear();
    expectFailure(upToParsing, "Unrecognised Safari bookmark format. No changes made.");
    expectDiskUntouched();
  }
}

// A missing bookmark file

const Entries upToTheQuestionWithoutFile =
    upToTheFolder + Entries{"read " + backup, "parse", "running? com.apple.Safari"};

TEST_F(RestoreJobTest, writesAFileThatIsMissing) {
  machine_.files.remove(bookmarks);
  EXPECT_EQ(performRestore(backup).outcome, RestoreOutcome::restored);
  expectDone(upToTheQuestionWithoutFile + Entries{"write new " + bookmarks}, restoredText);
  EXPECT_EQ(machine_.files.content(bookmarks), old_);
  EXPECT_EQ(machine_.files.files().size(), 2U) << "there was nothing to back up";
}

TEST_F(RestoreJobTest, overwritesNothingThatComesToBeMeanwhile) {
  machine_.files.remove(bookmarks);
  machine_.journal.before("write new", [&](const auto&) { machine_.files.put(bookmarks, "new"); });
  expectFailure(upToTheQuestionWithoutFile + Entries{"write new " + bookmarks}, "File exists");
  EXPECT_EQ(machine_.files.content(bookmarks), "new");
}

TEST_F(RestoreJobTest, writesNoMissingFileOnceSafariRuns) {
  machine_.files.remove(bookmarks);
  machine_.journal.after("parse", [&](const auto&) { machine_.applications.start(safari); });
  expectFailure(upToTheQuestionWithoutFile, "Quit Safari first");
  EXPECT_FALSE(machine_.files.files().contains(bookmarks));
}

TEST_F(RestoreJobTest, failsWhereTheFolderOfTheFileMayNotBeLookedThrough) {
  machine_.files.failOn("files in", EACCES);
  expectFailure(upToTheFolder, "Permission denied");
  expectDiskUntouched();
}

// Failing steps

TEST_F(RestoreJobTest, leavesEverythingIfTheFileCannotBeRead) {
  machine_.files.failOn("read", EACCES);
  expectFailure(upToReading, "Permission denied");
  expectDiskUntouched();
}

TEST_F(RestoreJobTest, leavesEverythingIfTheBackupsFolderCannotBeMade) {
  machine_.files.failOn("create folder", EROFS);
  const RestoreResult result = performRestore(backup);
  EXPECT_EQ(result.outcome, RestoreOutcome::failed);
  EXPECT_THAT(result.message, HasSubstr("Read-only file system"));
  expectDiskUntouched();
}

TEST_F(RestoreJobTest, leavesEverythingIfNoBackupCanBeWritten) {
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
  EXPECT_EQ(performRestore(backup).outcome, RestoreOutcome::failed);
  EXPECT_EQ(performRestore(backup).outcome, RestoreOutcome::restored);
  EXPECT_EQ(machine_.files.content(bookmarks), old_);
}

}  // namespace
