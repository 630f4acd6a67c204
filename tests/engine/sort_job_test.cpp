// The sort job: what it returns and which errors it throws. perform_sort_test.cpp tests its steps, and what is on the
// disk after a failure of each.
#include "engine/sort_job.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <optional>
#include <string>
#include <utility>

#include "engine/backups.h"
#include "engine/job_report.h"
#include "tests/support/bookmark_places.h"
#include "tests/support/bookmark_trees.h"
#include "tests/support/virtual_machine.h"

namespace {

using testing::Contains;
using testing::IsEmpty;
using testing::Not;

const std::string backup = backups + "/Bookmarks-" + VirtualProcesses::uuid(1) + ".plist";
const std::string secondBackup = backups + "/Bookmarks-" + VirtualProcesses::uuid(2) + ".plist";

PlistValue unsortedTree() { return rootNode({folderNode(u"Bar", {leafNode(u"b"), leafNode(u"a")})}); }

class SortJobTest : public testing::Test {
 protected:
  SortJobTest() { machine_.files.put(bookmarks, fileOf(unsortedTree())); }

  // The domain and the code of the error that a sort throws.
  static std::pair<std::string, int> errorOfASort() {
    try {
      sortBookmarkFile(bookmarks);
    } catch (const Error& error) {
      return {error.domain(), error.code()};
    }
    return {};
  }

  static std::pair<std::string, int> sorterCode(int code) { return {"Sorter", code}; }

  VirtualMachine machine_;
};

TEST_F(SortJobTest, returnsThePathOfTheBackup) {
  EXPECT_EQ(sortBookmarkFile(bookmarks), (Rewrite{backup, false, std::nullopt}));
}

// Another program had the file open and writes to it when it has just been compared.
TEST_F(SortJobTest, backsUpALateChange) {
  machine_.files.willChangeLate("changed late");
  EXPECT_EQ(sortBookmarkFile(bookmarks), (Rewrite{backup, true, secondBackup}));
  EXPECT_EQ(machine_.files.content(secondBackup), "changed late");
  EXPECT_EQ(machine_.files.mode(secondBackup), 0600U);
  EXPECT_EQ(outlineOf(machine_.files.content(bookmarks)), "Bar[a b]");
}

TEST_F(SortJobTest, reportsWhereALateChangeIs) {
  const std::string start =
      "Folders come first, followed by bookmarks in alphabetical order. You can reopen Safari.\n\n";
  const std::string late = "Another program changed the file at the same moment. Its version is not in the file; ";
  EXPECT_EQ(sortReport(Rewrite{"B", true, "L"}).message, start + late + "it is in this backup: L\n\nBackup: B");
  EXPECT_EQ(sortReport(Rewrite{"B", true, std::nullopt}).message,
            start + late + "no backup of it could be made.\n\nBackup: B");
  EXPECT_EQ(sortReport(Rewrite{"B", false, std::nullopt}).message, start + "Backup: B");
}

TEST_F(SortJobTest, succeedsIfALateChangeCannotBeBackedUp) {
  machine_.files.willChangeLate("changed late");
  machine_.files.failOn("write new", ENOSPC, 2);
  EXPECT_EQ(sortBookmarkFile(bookmarks), (Rewrite{backup, true, std::nullopt}));
  machine_.files.put(bookmarks, fileOf(unsortedTree()));
  machine_.files.willChangeLate(std::nullopt);
  EXPECT_EQ(sortBookmarkFile(bookmarks)->lateBackup, std::nullopt) << "it cannot be read";
}

TEST_F(SortJobTest, returnsNothingForAFileInOrder) {
  sortBookmarkFile(bookmarks);
  EXPECT_EQ(sortBookmarkFile(bookmarks), std::nullopt);
}

TEST_F(SortJobTest, reportsNothingItself) {
  sortBookmarkFile(bookmarks);
  EXPECT_THAT(machine_.output.text(), IsEmpty());
  EXPECT_THAT(machine_.userInterface.alerts(), IsEmpty());
}

TEST_F(SortJobTest, throwsCode1IfSafariRuns) {
  machine_.applications.start(safari);
  EXPECT_EQ(errorOfASort(), sorterCode(1));
}

TEST_F(SortJobTest, throwsCode2IfTheFileIsNotABookmarkTree) {
  machine_.files.put(bookmarks, fileOf(PlistValue::dictionary({{u"Title", u"no children"}})));
  EXPECT_EQ(errorOfASort(), sorterCode(2));
}

TEST_F(SortJobTest, throwsCode3IfSafariStartsMeanwhile) {
  machine_.journal.after("parse", [&](const auto&) { machine_.applications.start(safari); });
  EXPECT_EQ(errorOfASort(), sorterCode(3));
}

TEST_F(SortJobTest, throwsCode3IfSafariStartsWhileTheFileIsWritten) {
  const std::string before = machine_.files.content(bookmarks);
  machine_.journal.after("write beside", [&](const auto&) { machine_.applications.start(safari); });
  EXPECT_EQ(errorOfASort(), sorterCode(3));
  EXPECT_EQ(machine_.files.content(bookmarks), before);
}

TEST_F(SortJobTest, throwsCode3IfTheFileChanges) {
  machine_.journal.after("parse", [&](const auto&) { machine_.files.put(bookmarks, "changed"); });
  EXPECT_EQ(errorOfASort(), sorterCode(3));
  EXPECT_EQ(machine_.files.content(bookmarks), "changed");
}

TEST_F(SortJobTest, throwsCode6IfTheNewFileIsNotTheSortedTree) {
  const std::string before = machine_.files.content(bookmarks);
  for (const PlistValue& other :
       {unsortedTree(), rootNode({folderNode(u"Bar", {leafNode(u"a")})}), PlistValue::dictionary({})}) {
    machine_.propertyLists.willSerialize(other);
    EXPECT_EQ(errorOfASort(), sorterCode(6));
    EXPECT_EQ(machine_.files.content(bookmarks), before);
  }
}

TEST_F(SortJobTest, throwsTheParsersErrorIfTheNewFileIsDamaged) {
  machine_.journal.before("verify", [](const auto&) { throw Error("PropertyList", 3840, "It is damaged."); });
  EXPECT_EQ(errorOfASort(), (std::pair<std::string, int>("PropertyList", 3840)));
  EXPECT_EQ(machine_.journal.count("write beside"), 0);
}

TEST_F(SortJobTest, sortsANamedFileAndBacksItUpInAPlaceOfItsOwn) {
  const std::string other = "/home/user/Other.plist";
  const std::string otherContent = fileOf(unsortedTree(), PropertyListFormat::xml);
  const std::string userContent = machine_.files.content(bookmarks);
  machine_.files.put(other, otherContent, 0604);
  const std::string itsBackup = backups + "/Other Files" + other + "/Bookmarks-" + VirtualProcesses::uuid(1) + ".plist";
  EXPECT_EQ(sortBookmarkFile(other)->backup, itsBackup);
  EXPECT_EQ(outlineOf(machine_.files.content(other)), "Bar[a b]");
  EXPECT_EQ(machine_.files.mode(other), 0604U);
  EXPECT_EQ(machine_.files.content(itsBackup), otherContent);
  EXPECT_EQ(machine_.files.content(bookmarks), userContent) << "the user's own file is unchanged";
  EXPECT_THAT(machine_.journal.entries(), Not(Contains("read " + bookmarks)));
  EXPECT_THAT(machine_.journal.entries(), Contains("holds " + other));
}

TEST_F(SortJobTest, readsNoNamedFileWhileSafariRuns) {
  machine_.applications.start(safari);
  EXPECT_THROW(sortBookmarkFile("/home/user/Other.plist"), Error);
  EXPECT_EQ(machine_.journal.count("read"), 0);
}

TEST(BackupsFolder, isTheUsersOwn) {
  const VirtualMachine machine;
  EXPECT_EQ(backupsFolder(), backups);
  EXPECT_THAT(machine.journal.entries(), IsEmpty());
}

}  // namespace
