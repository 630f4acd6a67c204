// A sort, automatic and interactive: for each outcome what it reads, writes, creates and reports, in which order, and
// what is on the disk afterwards.
#include "app/perform_sort.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <functional>
#include <map>
#include <new>
#include <ostream>
#include <string>
#include <vector>

#include "app/alert.h"
#include "tests/support/bookmark_places.h"
#include "tests/support/bookmark_trees.h"
#include "tests/support/virtual_machine.h"

namespace {

using testing::AllOf;
using testing::Contains;
using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;

const std::string backup = backups + "/Bookmarks-" + VirtualProcesses::uuid(1) + ".plist";

const std::string sorted = "Bookmarks sorted";
const std::string failed = "Bookmarks could not be sorted";
const std::string safariIsOpen =
    "Quit Safari first, then run Vantorel from Finder → Services. Your bookmarks have not been changed.";
const std::string notABookmarkTree = "Unrecognised Safari bookmark format. No changes made.";
const std::string changedMeanwhile =
    "Safari or bookmark syncing changed the file. Nothing was overwritten; try again once syncing settles.";

// The operations in order; a sort that fails stops after some of them.
const Entries upToTheQuestions = {"running? com.apple.Safari", "running? com.apple.Safari"};
const Entries upToCleaning =
    upToTheQuestions + Entries{"remove abandoned " + bookmarks, "remove abandoned " + backups + "/"};
const Entries upToReading = upToCleaning + Entries{"read " + bookmarks};
const Entries upToParsing = upToReading + Entries{"parse"};
const Entries upToTheFolder = upToParsing + Entries{"create folder " + backups + " 0700"};
const Entries upToTheBackup = upToTheFolder + Entries{"uuid", "write new " + backup};
const Entries upToTheMode = upToTheBackup + Entries{"set mode " + backup + " 0600"};
const Entries upToSerializing = upToTheMode + Entries{"serialize binary"};
const Entries upToVerifying = upToSerializing + Entries{"verify"};
const Entries upToWritingBeside = upToVerifying + Entries{"write beside " + bookmarks};
const Entries upToTheLastQuestion = upToWritingBeside + Entries{"running? com.apple.Safari"};
const Entries upToComparing = upToTheLastQuestion + Entries{"holds " + bookmarks};
const Entries upToWriting = upToComparing + Entries{"write atomically " + bookmarks};

PlistValue unsortedTree() {
  return rootNode(
      {proxyNode(u"History"), folderNode(u"Menu", {leafNode(u"b")}),
       folderNode(u"BookmarksBar", {leafNode(u"Item 10"), leafNode(u"apple"),
                                    folderNode(u"Z folder", {leafNode(u"z"), leafNode(u"a")}), leafNode(u"Item 2")}),
       folderNode(u"com.apple.ReadingList", {leafNode(u"z"), leafNode(u"a")})});
}
constexpr const char* sortedOutline =
    "<History> Menu[b] BookmarksBar[Z folder[a z] apple Item 2 Item 10] com.apple.ReadingList[z a]";

PlistValue sortedTree() { return rootNode({folderNode(u"BookmarksBar", {leafNode(u"a"), leafNode(u"b")})}); }

enum class Mode { interactive, automatic };

std::string nameOf(Mode mode) { return mode == Mode::automatic ? "automatic" : "interactive"; }
void PrintTo(Mode mode, std::ostream* stream) { *stream << nameOf(mode); }  // NOLINT: GoogleTest's name

class PerformSortTest : public testing::TestWithParam<Mode> {
 protected:
  PerformSortTest() {
    machine_.files.put(bookmarks, fileOf(unsortedTree()), 0640);
    filesAtFirst_ = machine_.files.files();
    foldersAtFirst_ = machine_.files.folders();
  }

  static bool isAutomatic() { return GetParam() == Mode::automatic; }

  // Runs a sort as the controller does, dismisses the dialog of its report if there is one, and returns the report's
  // title, or "" if nothing was reported.
  std::string run(bool endsWithAReport = true) {
    if (!isAutomatic() && endsWithAReport) machine_.userInterface.willAnswer(0);
    const std::size_t printedBefore = machine_.output.text().size();
    automatic = isAutomatic();
    performSort();
    EXPECT_EQ(automatic, isAutomatic()) << "the sort does not change it";
    automatic = false;
    if (!isAutomatic()) return endsWithAReport ? machine_.userInterface.alerts().back().messageText : "";
    const std::string printed = machine_.output.text().substr(printedBefore);
    return printed.substr(0, printed.find(": "));
  }

  // The title of the report of a file that is in order.
  static std::string inOrder() { return isAutomatic() ? "" : "Already sorted"; }

  // The message of the last report.
  std::string message() const {
    if (!isAutomatic()) return machine_.userInterface.alerts().back().informativeText;
    const std::string& printed = machine_.output.text();
    const std::size_t start = printed.rfind(failed + ": ") + failed.size() + 2;
    return printed.substr(start, printed.size() - start - 1);
  }

  // Expects the journal to hold these operations and what this mode adds before and after them.
  void expectDone(const Entries& operations, const std::string& title, const std::string& message) const {
    Entries wanted = operations;
    if (isAutomatic()) {
      wanted.push_back("printed " + title + ": " + message + "\n");
      EXPECT_THAT(machine_.userInterface.alerts(), IsEmpty());
    } else {
      wanted.insert(wanted.begin(), "bundle path");
      wanted = wanted + Entries{"accessory", "activate", "alert " + title};
      ASSERT_FALSE(machine_.userInterface.alerts().empty());
      const Alert& alert = machine_.userInterface.alerts().back();
      EXPECT_EQ(alert.messageText, title);
      EXPECT_EQ(alert.informativeText, message);
      EXPECT_THAT(alert.buttons, IsEmpty()) << "the platform adds its single default button";
    }
    EXPECT_THAT(machine_.journal.entries(), ElementsAreArray(wanted));
  }

  // Runs a sort that fails after these operations, with exactly this description.
  void expectFailure(const Entries& operations, const std::string& description) {
    EXPECT_EQ(run(), failed);
    expectDone(operations, failed, description + accessHint);
  }

  // Runs a sort that fails after these operations, with a system error that contains `description`.
  void expectSystemFailure(const Entries& operations, const std::string& description) {
    EXPECT_EQ(run(), failed);
    EXPECT_THAT(message(), AllOf(HasSubstr(description), EndsWith(accessHint)));
    expectDone(operations, failed, message());
  }

  void expectDiskUntouched() const {
    EXPECT_EQ(machine_.files.files(), filesAtFirst_);
    EXPECT_EQ(machine_.files.folders(), foldersAtFirst_);
  }

  // Expects an unchanged bookmark file and one backup of it.
  void expectOnlyABackup(unsigned mode = 0600) const {
    auto wanted = filesAtFirst_;
    wanted[backup] = {filesAtFirst_.at(bookmarks).content, mode};
    EXPECT_EQ(machine_.files.files(), wanted);
  }

  VirtualMachine machine_;
  std::map<std::string, VirtualFileSystem::File> filesAtFirst_;
  std::map<std::string, unsigned> foldersAtFirst_;
};

// Tests of one mode only.
class UnattendedPerformSortTest : public PerformSortTest {};
class WatchedPerformSortTest : public PerformSortTest {};

INSTANTIATE_TEST_SUITE_P(Mode, PerformSortTest, testing::Values(Mode::interactive, Mode::automatic),
                         [](const auto& mode) { return nameOf(mode.param); });
INSTANTIATE_TEST_SUITE_P(Mode, UnattendedPerformSortTest, testing::Values(Mode::automatic),
                         [](const auto& mode) { return nameOf(mode.param); });
INSTANTIATE_TEST_SUITE_P(Mode, WatchedPerformSortTest, testing::Values(Mode::interactive),
                         [](const auto& mode) { return nameOf(mode.param); });

// Sorted

TEST_P(PerformSortTest, sortsStepByStepAndNamesTheBackup) {
  EXPECT_EQ(run(), sorted);
  expectDone(
      upToWriting, sorted,
      "Folders come first, followed by bookmarks in alphabetical order. You can reopen Safari.\n\nBackup: " + backup);
  EXPECT_EQ(outlineOf(machine_.files.content(bookmarks)), sortedOutline);
  EXPECT_EQ(machine_.files.mode(bookmarks), 0640U);
  EXPECT_EQ(machine_.files.content(backup), filesAtFirst_.at(bookmarks).content)
      << "the old bytes, not serialized again";
  EXPECT_EQ(machine_.files.files().size(), 2U);
}

TEST_P(PerformSortTest, endsItsMessageWithTheBackupsPlainPath) {
  run();
  const std::string message =
      isAutomatic() ? machine_.output.text() : machine_.userInterface.alerts().back().informativeText + "\n";
  EXPECT_THAT(message, EndsWith("\n\nBackup: /home/user/Library/Application Support/Quillery/Backups/Bookmarks-"
                                "5D2A9C1E-0B7F-4E63-9A48-000000000001.plist\n"));
}

TEST_P(PerformSortTest, createsPrivateFilesAndKeepsExistingModes) {
  machine_.files.put("/home/user/Library/Application Support/Other/settings", "", 0644);
  run();
  EXPECT_EQ(machine_.files.mode("/home/user/Library/Application Support"), 0755U);
  EXPECT_EQ(machine_.files.mode("/home/user/Library/Application Support/Quillery"), 0700U);
  EXPECT_EQ(machine_.files.mode(backups), 0700U);
  EXPECT_EQ(machine_.files.mode(backup), 0600U);
}

TEST_P(PerformSortTest, keepsABinaryFileBinary) {
  run();
  EXPECT_THAT(machine_.files.content(bookmarks), StartsWith("bplist00"));
  EXPECT_THAT(machine_.journal.entries(), Contains("serialize binary"));
}

TEST_P(PerformSortTest, keepsAnXmlFileXml) {
  machine_.files.put(bookmarks, fileOf(unsortedTree(), PropertyListFormat::xml));
  EXPECT_EQ(run(), sorted);
  EXPECT_THAT(machine_.files.content(bookmarks), StartsWith("<?xml version=\"1.0\" encoding=\"UTF-8\"?>"));
  EXPECT_THAT(machine_.journal.entries(), Contains("serialize xml"));
  EXPECT_EQ(outlineOf(machine_.files.content(bookmarks)), sortedOutline);
}

TEST_P(PerformSortTest, keepsEveryOtherKeyAndValue) {
  run();
  const PlistValue before = NativePropertyLists().parse(Bytes(filesAtFirst_.at(bookmarks).content)).value;
  const PlistValue after = NativePropertyLists().parse(Bytes(machine_.files.content(bookmarks))).value;
  EXPECT_EQ(after.value(u"WebBookmarkFileVersion"), PlistValue(1));
  EXPECT_EQ(after.value(u"Children")->at(3), before.value(u"Children")->at(3)) << "the Reading List";
}

// Already in order

TEST_P(PerformSortTest, doesNothingToAFileInOrderAndMakesNoBackup) {
  machine_.files.put(bookmarks, fileOf(sortedTree()));
  filesAtFirst_ = machine_.files.files();
  EXPECT_EQ(run(), inOrder());
  if (isAutomatic())
    EXPECT_THAT(machine_.journal.entries(), ElementsAreArray(upToParsing)) << "nothing is reported";
  else
    expectDone(upToParsing, "Already sorted", "Your Safari bookmarks are already in order.");
  expectDiskUntouched();
}

TEST_P(PerformSortTest, findsARootWithoutEntriesInOrder) {
  machine_.files.put(bookmarks, fileOf(PlistValue::dictionary({{u"Children", PlistValue::array({})}})));
  EXPECT_EQ(run(), inOrder());
}

TEST_P(PerformSortTest, findsTheFileInOrderTheSecondTime) {
  EXPECT_EQ(run(), sorted);
  const auto afterTheFirst = machine_.files.files();
  EXPECT_EQ(afterTheFirst.size(), 2U);
  EXPECT_EQ(run(), inOrder());
  EXPECT_EQ(machine_.files.files(), afterTheFirst);
}

TEST_P(PerformSortTest, keepsEveryBackup) {
  run();
  machine_.files.put(bookmarks, fileOf(unsortedTree(), PropertyListFormat::xml));
  EXPECT_EQ(run(), sorted);
  EXPECT_EQ(machine_.files.content(backup), filesAtFirst_.at(bookmarks).content);
  EXPECT_EQ(machine_.files.content(backups + "/Bookmarks-" + VirtualProcesses::uuid(2) + ".plist"),
            fileOf(unsortedTree(), PropertyListFormat::xml));
}

// The disk image

TEST_P(WatchedPerformSortTest, refusesToRunFromADiskImage) {
  machine_.bundle.moveTo("/Volumes/Quillery/Quillery.app");
  EXPECT_EQ(run(), "Install the app first");
  expectDone({}, "Install the app first",
             "Drag Quillery into Applications, then open the installed copy. Automatic sorting cannot run from a disk "
             "image.");
  expectDiskUntouched();
}

TEST_P(WatchedPerformSortTest, takesOnlyPathsUnderVolumesForADiskImage) {
  for (const char* path :
       {"/Volumes", "/VolumesX/Quillery.app", "/Users/Volumes/Quillery.app", "/volumes/Quillery.app"}) {
    machine_.bundle.moveTo(path);
    machine_.files.put(bookmarks, fileOf(unsortedTree()));
    EXPECT_EQ(run(), sorted) << path;
  }
}

TEST_P(UnattendedPerformSortTest, doesNotCheckForADiskImage) {
  machine_.bundle.moveTo("/Volumes/Quillery/Quillery.app");
  EXPECT_EQ(run(), sorted);
  EXPECT_EQ(machine_.journal.count("bundle path"), 0);
}

// Safari at the start

TEST_P(UnattendedPerformSortTest, readsAndReportsNothingWhileSafariRuns) {
  machine_.applications.start(safari);
  EXPECT_EQ(run(), "");
  EXPECT_THAT(machine_.journal.entries(), ElementsAre("running? com.apple.Safari"));
  expectDiskUntouched();
}

TEST_P(WatchedPerformSortTest, asksToQuitSafariAndSortsOnceItHasQuit) {
  machine_.applications.start(safari);
  machine_.userInterface.willAnswer(0, [&] { machine_.applications.end(safari); });
  EXPECT_EQ(run(), sorted);
  const Alert& question = machine_.userInterface.alerts().front();
  EXPECT_EQ(question.messageText, "Safari is still open");
  EXPECT_EQ(question.informativeText,
            "Quit Safari, then click Retry to sort your bookmarks. Your bookmarks have not been changed.");
  EXPECT_THAT(question.buttons, ElementsAre("Retry", "Cancel"));
  EXPECT_THAT(machine_.journal.entries(),
              ElementsAreArray(Entries{"bundle path", "running? com.apple.Safari", "accessory", "activate",
                                       "alert Safari is still open"} +
                               upToWriting + Entries{"accessory", "activate", "alert Bookmarks sorted"}));
}

TEST_P(WatchedPerformSortTest, asksAgainWhileSafariStaysOpen) {
  machine_.applications.start(safari);
  for (int time = 0; time < 3; ++time) machine_.userInterface.willAnswer(0);
  machine_.userInterface.willAnswer(0, [&] { machine_.applications.end(safari); });
  EXPECT_EQ(run(), sorted);
  EXPECT_EQ(machine_.journal.count("alert"), 5);
}

TEST_P(WatchedPerformSortTest, readsNothingIfTheUserCancels) {
  machine_.applications.start(safari);
  machine_.userInterface.willAnswer(1);
  EXPECT_EQ(run(false), "");
  EXPECT_THAT(machine_.journal.entries(), ElementsAre("bundle path", "running? com.apple.Safari", "accessory",
                                                      "activate", "alert Safari is still open"));
  expectDiskUntouched();
}

TEST_P(WatchedPerformSortTest, takesAnyAnswerButRetryAsCancel) {
  machine_.applications.start(safari);
  machine_.userInterface.willAnswer(7, [&] { machine_.applications.end(safari); });
  EXPECT_EQ(run(false), "");
  EXPECT_EQ(machine_.journal.count("read"), 0);
}

TEST_P(WatchedPerformSortTest, canBeCancelledAfterARetry) {
  machine_.applications.start(safari);
  machine_.userInterface.willAnswer(0);
  machine_.userInterface.willAnswer(1);
  EXPECT_EQ(run(false), "");
  EXPECT_EQ(machine_.journal.count("read"), 0);
}

TEST_P(PerformSortTest, ignoresOtherApplications) {
  machine_.applications.start("com.apple.SafariTechnologyPreview");
  EXPECT_EQ(run(), sorted);
}

TEST_P(PerformSortTest, failsIfSafariStartsBeforeTheFileIsRead) {
  machine_.journal.before(
      "running?", [&](const auto&) { machine_.applications.start(safari); }, 2);
  expectFailure(upToTheQuestions, safariIsOpen);
  expectDiskUntouched();
}

// A bookmark file that cannot be read or is of the wrong shape

TEST_P(PerformSortTest, reportsAMissingFileAndCreatesNothing) {
  machine_.files.remove(bookmarks);
  filesAtFirst_ = machine_.files.files();
  expectSystemFailure(upToReading,
                      "The file “Bookmarks.plist” couldn’t be opened: No such file or directory (" + bookmarks + ").");
  expectDiskUntouched();
}

TEST_P(PerformSortTest, reportsARefusedReadAndCreatesNothing) {
  machine_.files.failOn("read", EACCES);
  expectSystemFailure(upToReading, "Permission denied");
  expectDiskUntouched();
}

TEST_P(PerformSortTest, reportsADiskFailureAndCreatesNothing) {
  machine_.files.failOn("read", EIO);
  expectSystemFailure(upToReading, "Input/output error");
  expectDiskUntouched();
}

TEST_P(PerformSortTest, reportsTheParsersErrorAndCreatesNothing) {
  for (const char* content :
       {"", "no property list, {", "bplist00 but no more", "<?xml version=\"1.0\"?><plist><dict>"}) {
    machine_.files.put(bookmarks, content);
    filesAtFirst_ = machine_.files.files();
    machine_.journal.clear();
    std::string description;
    try {
      NativePropertyLists().parse(Bytes(std::string(content)));
    } catch (const Error& error) {
      description = error.description();
    }
    ASSERT_NE(description, "") << content;
    expectFailure(upToParsing, description);
    expectDiskUntouched();
  }
}

TEST_P(PerformSortTest, refusesEveryOtherShapeAndCreatesNothing) {
  const std::vector<PlistValue> shapes = {
      PlistValue::array({unsortedTree()}),
      u"a string",
      PlistValue::dictionary({}),
      PlistValue::dictionary({{u"Title", u"no children"}}),
      PlistValue::dictionary({{u"children", PlistValue::array({})}}),
      PlistValue::dictionary({{u"Children", u"a string"}}),
      PlistValue::dictionary({{u"Children", unsortedTree()}}),
      PlistValue::dictionary({{u"Children", PlistValue::array({unsortedTree(), u"a string"})}}),
      PlistValue::dictionary({{u"Children", PlistValue::array({PlistValue::array({})})}})};
  for (const PlistValue& shape : shapes)
    for (const PropertyListFormat format : {PropertyListFormat::binary, PropertyListFormat::xml}) {
      machine_.files.put(bookmarks, fileOf(shape, format));
      filesAtFirst_ = machine_.files.files();
      machine_.journal.clear();
      expectFailure(upToParsing, notABookmarkTree);
      expectDiskUntouched();
    }
}

TEST_P(PerformSortTest, reportsAnExceptionOfAnotherTypeToo) {
  machine_.journal.before("parse", [](const auto&) { throw std::bad_alloc(); });
  expectFailure(upToParsing, std::bad_alloc().what());
  expectDiskUntouched();
}

// The backup cannot be made

TEST_P(PerformSortTest, leavesTheFileIfTheBackupsFolderCannotBeCreated) {
  for (const auto& [problem, words] :
       {std::pair(EACCES, "Permission denied"), std::pair(EROFS, "Read-only file system"),
        std::pair(ENOSPC, "No space left on device")}) {
    machine_.files.failOn("create folder", problem, machine_.journal.count("create folder") + 1);
    machine_.journal.clear();
    expectSystemFailure(upToTheFolder, std::string("The folder “Backups” couldn’t be created: ") + words);
    expectDiskUntouched();
  }
}

TEST_P(PerformSortTest, leavesTheFileIfTheBackupsFolderIsAFile) {
  machine_.files.put("/home/user/Library/Application Support/Quillery", "a file");
  filesAtFirst_ = machine_.files.files();
  foldersAtFirst_ = machine_.files.folders();
  expectSystemFailure(upToTheFolder, "Not a directory");
  expectDiskUntouched();
}

TEST_P(PerformSortTest, leavesTheFileIfThereIsNoSpaceForTheBackup) {
  machine_.files.failOn("write new", ENOSPC);
  expectSystemFailure(upToTheBackup, "No space left on device");
  EXPECT_EQ(machine_.files.files(), filesAtFirst_);
  EXPECT_EQ(machine_.files.mode(backups), 0700U) << "the new folder stays";
}

TEST_P(PerformSortTest, leavesTheFileIfTheBackupMayNotBeWritten) {
  machine_.files.failOn("write new", EACCES);
  expectSystemFailure(upToTheBackup, "Permission denied");
  EXPECT_EQ(machine_.files.files(), filesAtFirst_);
}

TEST_P(PerformSortTest, leavesBothFilesIfTheBackupsNameExists) {
  machine_.files.put(backup, "somebody else's", 0644);
  filesAtFirst_ = machine_.files.files();
  expectSystemFailure(upToTheBackup, "File exists");
  EXPECT_EQ(machine_.files.files(), filesAtFirst_);
}

TEST_P(PerformSortTest, leavesTheFileIfTheBackupsModeCannotBeSet) {
  machine_.files.failOn("set mode", EPERM);
  expectSystemFailure(upToTheMode, "Operation not permitted");
  expectOnlyABackup(0644);
}

// The file cannot be serialised

TEST_P(PerformSortTest, leavesAnOldStyleFileWithABackup) {
  machine_.files.put(bookmarks,
                     "{ Children = ( { WebBookmarkType = WebBookmarkTypeList; Title = Bar; Children = ( "
                     "{ WebBookmarkType = WebBookmarkTypeLeaf; Title = b; }, "
                     "{ WebBookmarkType = WebBookmarkTypeLeaf; Title = a; } ); } ); }");
  filesAtFirst_ = machine_.files.files();
  expectSystemFailure(upToTheMode + Entries{"serialize old-style"}, "the old-style format can be read but not written");
  expectOnlyABackup();
}

TEST_P(PerformSortTest, findsAnOldStyleFileInOrder) {
  machine_.files.put(bookmarks, "{ Children = ( { WebBookmarkType = WebBookmarkTypeLeaf; Title = b; } ); }");
  EXPECT_EQ(run(), inOrder());
}

TEST_P(PerformSortTest, leavesTheFileAndABackupIfSerializingFails) {
  machine_.journal.before("serialize", [](const auto&) { throw Error("PropertyList", 3851, "It cannot be written."); });
  expectFailure(upToSerializing, "It cannot be written.");
  expectOnlyABackup();
}

// The file changes, or Safari starts, during the sort

TEST_P(PerformSortTest, leavesAFileInWhichOneByteChanged) {
  machine_.journal.after("read", [&](const std::string& path) {
    std::string changed = machine_.files.content(path);
    changed[changed.find("apple")] = 'A';
    machine_.files.put(path, changed, 0640);
  });
  expectFailure(upToComparing, changedMeanwhile);
  std::string changed = filesAtFirst_.at(bookmarks).content;
  changed[changed.find("apple")] = 'A';
  auto wanted = filesAtFirst_;
  wanted[bookmarks].content = changed;
  wanted[backup] = {filesAtFirst_.at(bookmarks).content, 0600};
  EXPECT_EQ(machine_.files.files(), wanted);
}

TEST_P(PerformSortTest, leavesAFileThatChangedJustBeforeTheComparison) {
  machine_.journal.before("holds", [&](const std::string& path) { machine_.files.put(path, "changed"); });
  expectFailure(upToComparing, changedMeanwhile);
  EXPECT_EQ(machine_.files.content(bookmarks), "changed");
}

TEST_P(PerformSortTest, leavesAFileThatGrewOrShrank) {
  const std::string old = filesAtFirst_.at(bookmarks).content;
  for (const std::string& changed : {old + '\0', old.substr(0, old.size() - 1), std::string()}) {
    machine_.files.put(bookmarks, old);
    machine_.journal.after(
        "read", [&](const std::string& path) { machine_.files.put(path, changed); },
        machine_.journal.count("read") + 1);
    EXPECT_EQ(run(), failed);
    EXPECT_EQ(machine_.files.content(bookmarks), changed);
  }
}

TEST_P(PerformSortTest, replacesAFileThatWasChangedAndChangedBack) {
  const std::string old = filesAtFirst_.at(bookmarks).content;
  machine_.journal.after("read", [&](const std::string& path) { machine_.files.put(path, "changed"); });
  machine_.journal.before("holds", [&](const std::string& path) { machine_.files.put(path, old); });
  EXPECT_EQ(run(), sorted);
}

TEST_P(PerformSortTest, doesNotRecreateADeletedFile) {
  machine_.journal.after("read", [&](const std::string& path) { machine_.files.remove(path); });
  expectSystemFailure(upToComparing, "No such file or directory");
  EXPECT_FALSE(machine_.files.files().contains(bookmarks));
}

TEST_P(PerformSortTest, leavesAFileThatCannotBeReadASecondTime) {
  machine_.files.failOn("holds", EIO);
  expectSystemFailure(upToComparing, "Input/output error");
  expectOnlyABackup();
}

TEST_P(PerformSortTest, leavesTheFileIfSafariStartsAfterItWasRead) {
  for (const char* step : {"read", "parse", "create folder", "write new", "set mode", "serialize"}) {
    SCOPED_TRACE(step);
    machine_.applications.end(safari);
    machine_.journal.clear();
    machine_.journal.after(
        step, [&](const auto&) { machine_.applications.start(safari); }, machine_.journal.count(step) + 1);
    EXPECT_EQ(run(), failed);
    EXPECT_EQ(message(), changedMeanwhile + accessHint);
    EXPECT_EQ(machine_.journal.count("holds"), 0) << "the check for Safari comes first";
    EXPECT_EQ(machine_.files.content(bookmarks), filesAtFirst_.at(bookmarks).content);
    const int number = machine_.journal.count("uuid");
    EXPECT_EQ(machine_.files.mode(backups + "/Bookmarks-" + VirtualProcesses::uuid(number) + ".plist"), 0600U);
  }
}

TEST_P(PerformSortTest, leavesTheFileAndABackupIfSafariStartsMeanwhile) {
  machine_.journal.before(
      "running?", [&](const auto&) { machine_.applications.start(safari); }, 3);
  expectFailure(upToTheLastQuestion, changedMeanwhile);
  expectOnlyABackup();
}

// The last write

TEST_P(PerformSortTest, leavesTheOldFileWholeIfTheLastWriteFails) {
  machine_.files.failOn("write atomically", ENOSPC);
  expectSystemFailure(upToWriting, "No space left on device");
  expectOnlyABackup();
}

TEST_P(PerformSortTest, leavesTheOldFileWholeIfTheLastWriteStopsHalfWay) {
  machine_.files.failOn("write atomically", EIO);
  expectSystemFailure(upToWriting, "Input/output error");
  expectOnlyABackup();
}

TEST_P(PerformSortTest, leavesTheOldFileWholeIfTheFolderIsReadOnly) {
  machine_.files.failOn("write atomically", EACCES);
  expectSystemFailure(upToWriting, "Permission denied");
  expectOnlyABackup();
}

TEST_P(PerformSortTest, sortsTheNextTimeAfterAnyFailure) {
  machine_.files.failOn("write atomically", ENOSPC);
  EXPECT_EQ(run(), failed);
  EXPECT_EQ(run(), sorted);
  EXPECT_EQ(outlineOf(machine_.files.content(bookmarks)), sortedOutline);
}

// Failures outside of the job

TEST_P(WatchedPerformSortTest, survivesADialogThatCannotBeShown) {
  machine_.journal.before("alert", [](const auto&) { throw Error("Desktop", 1, "There is no screen."); });
  testing::internal::CaptureStderr();
  performSort();
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "quillery: the outcome of a sort could not be reported\n");
  EXPECT_EQ(outlineOf(machine_.files.content(bookmarks)), sortedOutline);
}

TEST_P(PerformSortTest, reportsThatTheQueryForSafariFailed) {
  machine_.journal.before("running?", [](const auto&) { throw Error("Bus", 1, "The bus does not answer."); });
  expectFailure(
      {"running? com.apple.Safari"},
      "It is unknown whether Safari is running, so your bookmarks have not been changed. Try again later. The "
      "bus does not answer.");
  expectDiskUntouched();
}

}  // namespace
