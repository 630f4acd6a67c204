// Each command of the companion: what it reads, writes and prints, and its exit status.
#include "companion/companion.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <iostream>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "platform/product.h"
#include "tests/companion/companion_machine.h"
#include "tests/support/binary_file.h"
#include "tests/support/bookmark_trees.h"

namespace {

using testing::AllOf;
using testing::Contains;
using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::MatchesRegex;
using testing::Not;
using testing::StartsWith;

constexpr const char* newBackup = "Bookmarks-5D2A9C1E-0B7F-4E63-9A48-000000000001.plist";
const std::string otherFile = "/home/user/folder/Other.plist";
const std::string otherBackups = backups + "/Other Files" + otherFile;

PlistValue unsortedTree() {
  return rootNode({proxyNode(u"History"),
                   folderNode(u"Bar", {leafNode(u"Item 10"), leafNode(u"apple"),
                                       folderNode(u"Z", {leafNode(u"a"), leafNode(u"b")}), leafNode(u"Item 2")}),
                   folderNode(u"Menu", {leafNode(u"a"), folderNode(u"F", {leafNode(u"2"), leafNode(u"1")})}),
                   folderNode(u"com.apple.ReadingList", {leafNode(u"z"), leafNode(u"a")})});
}

PlistValue sortedTree() { return rootNode({folderNode(u"Bar", {leafNode(u"a"), leafNode(u"b")})}); }

class CompanionCommandTest : public testing::Test, protected CompanionMachine {
 protected:
  CompanionCommandTest() { machine_.files.put(bookmarks, fileOf(unsortedTree())); }

  void putSorted() { machine_.files.put(bookmarks, fileOf(sortedTree())); }
  void putBackup(const std::string& name, const std::string& content, const std::string& modified) {
    machine_.files.put(backups + "/" + name, content);
    machine_.files.setModified(backups + "/" + name, utc(modified));
  }

  // Expects this status, this output and nothing on standard error.
  void expectEnding(const Ending& ending, int status, const std::string& output) {
    EXPECT_EQ(ending.status, status);
    EXPECT_EQ(ending.output, output);
    EXPECT_EQ(ending.error, "");
  }

  // Runs a command that fails with a message that contains `part`, and prints nothing on standard output.
  void expectFailure(const std::vector<std::string>& arguments, const std::string& part, int status = 1) {
    const Ending ending = run(arguments);
    EXPECT_EQ(ending.status, status);
    EXPECT_EQ(ending.output, "");
    EXPECT_THAT(ending.error, AllOf(StartsWith("quilleryctl: "), HasSubstr(part), EndsWith("\n")));
  }
};

// Previews

using CompanionPreview = CompanionCommandTest;

TEST_F(CompanionPreview, showsMovedEntriesAndTheirFolders) {
  expectEnding(run({"preview"}), 0,
               "  ▸ Bar\n"
               "↑   ▸ Z  (3 → 1)\n"
               "↓     Item 10  (1 → 4)\n"
               "  ▸ Menu\n"
               "↑   ▸ F  (2 → 1)\n"
               "↑       1  (2 → 1)\n"
               "A sort would move 4 entries in 3 folders. Nothing was written.\n");
}

TEST_F(CompanionPreview, onlyReadsTheFile) {
  const auto before = machine_.files.files();
  run({"preview"});
  EXPECT_THAT(machine_.journal.entries(), ElementsAre("read " + bookmarks, "parse", StartsWith("printed ")));
  EXPECT_EQ(machine_.files.files(), before);
}

TEST_F(CompanionPreview, showsTheWholeTreeIfAsked) {
  expectEnding(run({"preview", "--all"}), 0,
               "  · History\n"
               "  ▸ Bar\n"
               "↑   ▸ Z  (3 → 1)\n"
               "        a\n"
               "        b\n"
               "      apple\n"
               "      Item 2\n"
               "↓     Item 10  (1 → 4)\n"
               "  ▸ Menu\n"
               "↑   ▸ F  (2 → 1)\n"
               "↑       1  (2 → 1)\n"
               "        2\n"
               "      a\n"
               "  ▸ com.apple.ReadingList\n"
               "      z\n"
               "      a\n"
               "A sort would move 4 entries in 3 folders. Nothing was written.\n");
}

TEST_F(CompanionPreview, leavesOutItsLastLineIfQuiet) {
  EXPECT_THAT(run({"preview", "--quiet"}).output, EndsWith("(2 → 1)\n"));
  putSorted();
  expectEnding(run({"preview", "-q"}), 0, "");
}

TEST_F(CompanionPreview, reportsThatAllIsInOrder) {
  putSorted();
  expectEnding(run({"preview"}), 0, "Your Safari bookmarks are already in order.\n");
  expectEnding(run({"preview", "--all"}), 0,
               "  ▸ Bar\n"
               "      a\n"
               "      b\n"
               "Your Safari bookmarks are already in order.\n");
}

TEST_F(CompanionPreview, countsOneEntryInOneFolder) {
  machine_.files.put(bookmarks, fileOf(rootNode({folderNode(u"Bar", {leafNode(u"b"), leafNode(u"a")})})));
  EXPECT_THAT(run({"preview"}).output, EndsWith("A sort would move 1 entry in 1 folder. Nothing was written.\n"));
}

TEST_F(CompanionPreview, readsANamedFile) {
  machine_.files.put(otherFile, fileOf(sortedTree()));
  expectEnding(run({"preview", otherFile}), 0, otherFile + " is already in order.\n");
  expectEnding(run({"preview", "Other.plist"}), 0, "Other.plist is already in order.\n");
  EXPECT_THAT(machine_.journal.entries(), Not(Contains("read " + bookmarks)));
}

TEST_F(CompanionPreview, runsWhileSafariRuns) {
  machine_.applications.start(safari);
  EXPECT_EQ(run({"preview"}).status, 0);
  EXPECT_EQ(machine_.journal.count("running?"), 0);
}

TEST_F(CompanionPreview, labelsAnEntryWithoutATitleByItsAddress) {
  machine_.files.put(bookmarks,
                     fileOf(rootNode({folderNode(u"Bar", {leafNode(u"a"), leafNode(u""), folderNode(u"", {})})})));
  expectEnding(run({"preview", "-q"}), 0,
               "  ▸ Bar\n"
               "↑   ▸ (no title)  (3 → 1)\n"
               "↓     a  (1 → 3)\n");
  EXPECT_THAT(run({"preview", "--all"}).output, HasSubstr("      (no title) https://bookmark.example.org/\n"));
  const auto json = nlohmann::json::parse(run({"preview", "--json"}).output);
  EXPECT_EQ(json["children"][0]["children"][1]["address"], "https://bookmark.example.org/");
  EXPECT_FALSE(json["children"][0]["children"][2].contains("address"));
}

TEST_F(CompanionPreview, showsSeveralFilesByTheirNames) {
  machine_.files.put(otherFile, fileOf(sortedTree()));
  EXPECT_THAT(
      run({"preview", bookmarks, "Other.plist"}).output,
      AllOf(StartsWith(bookmarks + ":\n  ▸ Bar\n"), EndsWith("Other.plist:\nOther.plist is already in order.\n")));
  EXPECT_EQ(run({"preview", "Other.plist", "None.plist"}).status, 1);
}

TEST_F(CompanionPreview, isADryRunOfASort) {
  EXPECT_EQ(run({"sort", "--dry-run"}).output, run({"preview"}).output);
  EXPECT_EQ(run({"sort", "-n", "-q"}).output, run({"preview", "-q"}).output);
  EXPECT_EQ(machine_.files.content(bookmarks), fileOf(unsortedTree()));
}

TEST_F(CompanionPreview, readsStandardInput) {
  expectEnding(runWithInput(fileOf(sortedTree()), {"preview", "-"}), 0, "standard input is already in order.\n");
  const Ending damaged = runWithInput("bplist00", {"preview", "-"});
  EXPECT_EQ(damaged.status, 1);
  EXPECT_THAT(damaged.error, StartsWith("quilleryctl: standard input: "));
  EXPECT_EQ(machine_.journal.count("read"), 0);
}

TEST_F(CompanionPreview, escapesControlCharactersInTitles) {
  machine_.files.put(bookmarks,
                     fileOf(rootNode({folderNode(u"\x1b[2J", {leafNode(u"z\nforged"), leafNode(u"\x1b]0;\x07")})})));
  const Ending ending = run({"preview"});
  EXPECT_THAT(ending.output, HasSubstr("▸ \\u{1B}[2J\n"));
  EXPECT_THAT(run({"preview", "--all"}).output, HasSubstr("z\\u{0A}forged"));
  for (const char* option : {"--all", "--json"})
    EXPECT_THAT(run({"preview", option}).output, AllOf(Not(HasSubstr("\x1b")), Not(HasSubstr("\x07"))));
}

TEST_F(CompanionPreview, pointsDownAtAnEntryThatMovesToTheSamePlace) {
  // d and e keep their order, so a, b and c move past them, although c is in the third place before and afterwards.
  machine_.files.put(bookmarks, fileOf(rootNode({folderNode(u"Bar", {leafNode(u"d"), leafNode(u"e"), leafNode(u"c"),
                                                                     leafNode(u"a"), leafNode(u"b")})})));
  expectEnding(run({"preview", "--quiet"}), 0,
               "  ▸ Bar\n"
               "↑     a  (4 → 1)\n"
               "↑     b  (5 → 2)\n"
               "↓     c  (3 → 3)\n");
}

TEST_F(CompanionPreview, hasColorsOnAColorTerminal) {
  machine_.processes.startInTerminal();
  machine_.processes.setVariable("TERM", "xterm");
  EXPECT_THAT(run({"preview"}).output,
              StartsWith("  ▸ \x1b[1mBar\x1b[0m\n\x1b[32m↑ \x1b[0m  ▸ \x1b[1mZ\x1b[0m  \x1b[2m(3 → 1)\x1b[0m\n"));
}

TEST_F(CompanionPreview, hasNoColorsIfTheyAreNotWanted) {
  const std::string plain = run({"preview"}).output;
  machine_.processes.setVariable("TERM", "xterm");
  EXPECT_EQ(run({"preview"}).output, plain) << "not a terminal";
  machine_.processes.startInTerminal();
  EXPECT_NE(run({"preview"}).output, plain);
  machine_.processes.setVariable("NO_COLOR", "");
  EXPECT_NE(run({"preview"}).output, plain) << "set but empty";
  machine_.processes.setVariable("NO_COLOR", "1");
  EXPECT_EQ(run({"preview"}).output, plain);
  machine_.processes.setVariable("NO_COLOR", "");
  machine_.processes.setVariable("TERM", "dumb");
  EXPECT_EQ(run({"preview"}).output, plain);
}

TEST_F(CompanionPreview, hasColorsAsAsked) {
  const std::string plain = run({"preview"}).output;
  EXPECT_THAT(run({"preview", "--color=always"}).output, HasSubstr("\x1b[1mBar"));
  EXPECT_EQ(run({"preview", "--color", "auto"}).output, plain);
  machine_.processes.startInTerminal();
  machine_.processes.setVariable("TERM", "xterm");
  EXPECT_EQ(run({"preview", "--color=never"}).output, plain);
  EXPECT_NE(run({"preview", "--color=auto"}).output, plain);
}

TEST_F(CompanionPreview, jsonListsEveryFolderThatChanges) {
  const Ending ending = run({"preview", "--json"});
  EXPECT_EQ(ending.status, 0);
  EXPECT_EQ(nlohmann::json::parse(ending.output), nlohmann::json::parse(R"({
    "file": "/home/user/Library/Safari/Bookmarks.plist", "isInOrder": false, "moved": 4, "folders": 3, "children": [
      {"title": "History", "kind": "other", "from": 0, "moved": false},
      {"title": "Bar", "kind": "folder", "from": 1, "moved": false, "children": [
        {"title": "Z", "kind": "folder", "from": 2, "moved": true},
        {"title": "apple", "kind": "bookmark", "from": 1, "moved": false},
        {"title": "Item 2", "kind": "bookmark", "from": 3, "moved": false},
        {"title": "Item 10", "kind": "bookmark", "from": 0, "moved": true}]},
      {"title": "Menu", "kind": "folder", "from": 2, "moved": false, "children": [
        {"title": "F", "kind": "folder", "from": 1, "moved": true, "children": [
          {"title": "1", "kind": "bookmark", "from": 1, "moved": true},
          {"title": "2", "kind": "bookmark", "from": 0, "moved": false}]},
        {"title": "a", "kind": "bookmark", "from": 0, "moved": false}]},
      {"title": "com.apple.ReadingList", "kind": "folder", "from": 3, "moved": false}]})"));
}

TEST_F(CompanionPreview, jsonIndentsNestedFolders) {
  machine_.files.put(
      bookmarks,
      fileOf(rootNode({folderNode(u"Bar", {folderNode(u"b", {leafNode(u"2"), leafNode(u"1")}), folderNode(u"a", {})}),
                       leafNode(u"z")})));
  expectEnding(run({"preview", "--json"}), 0,
               R"({"file": "/home/user/Library/Safari/Bookmarks.plist", "isInOrder": false, "children": [
  {"title": "Bar", "kind": "folder", "from": 0, "moved": false, "children": [
    {"title": "a", "kind": "folder", "from": 1, "moved": true},
    {"title": "b", "kind": "folder", "from": 0, "moved": false, "children": [
      {"title": "1", "kind": "bookmark", "from": 1, "moved": true},
      {"title": "2", "kind": "bookmark", "from": 0, "moved": false}
    ]}
  ]},
  {"title": "z", "kind": "bookmark", "from": 1, "moved": false}
], "moved": 2, "folders": 2}
)");
}

TEST_F(CompanionPreview, jsonListsTheWholeTreeIfAsked) {
  const auto json = nlohmann::json::parse(run({"preview", "--json", "--all"}).output);
  EXPECT_EQ(json["children"][1]["children"][0]["children"].size(), 2U);
  EXPECT_EQ(json["children"][3]["children"][0]["title"], "z");
  EXPECT_EQ(json["moved"], 4);
}

TEST_F(CompanionPreview, jsonReportsThatAllIsInOrder) {
  putSorted();
  expectEnding(run({"preview", "--json"}), 0,
               "{\"file\": \"/home/user/Library/Safari/Bookmarks.plist\", \"isInOrder\": true, \"moved\": 0, "
               "\"folders\": 0}\n");
  machine_.files.put(bookmarks, fileOf(rootNode({})));
  expectEnding(run({"preview", "--json", "--all"}), 0,
               "{\"file\": \"/home/user/Library/Safari/Bookmarks.plist\", \"isInOrder\": true, \"children\": [], "
               "\"moved\": 0, \"folders\": 0}\n");
}

TEST_F(CompanionPreview, jsonEscapesAnyTitle) {
  std::u16string title = u"\"\\/\b\n\x1b\u007F\u009B é アニメ 🚀 \u202E";
  title += static_cast<char16_t>(0xD800);
  title += u'x';
  title += static_cast<char16_t>(0xDC00);
  machine_.files.put(bookmarks, fileOf(rootNode({leafNode(title)})));
  const Ending ending = run({"preview", "--json", "--all"});
  EXPECT_EQ(nlohmann::json::parse(ending.output)["children"][0]["title"], utf8(title));
  EXPECT_THAT(ending.output, MatchesRegex("[ -~\n]*")) << "only printable ASCII";
}

TEST_F(CompanionPreview, cutsLongTitlesInTheText) {
  const std::u16string longest(300, u'x');
  machine_.files.put(bookmarks, fileOf(rootNode({leafNode(longest), leafNode(longest + u"y"),
                                                 leafNode(longest.substr(1) + u"🚀"), leafNode(u"end")})));
  expectEnding(
      run({"preview", "--all", "--quiet"}), 0,
      "    " + utf8(longest) + "\n    " + utf8(longest) + "…\n    " + utf8(longest.substr(1)) + "…\n    end\n");
  const auto json = nlohmann::json::parse(run({"preview", "--all", "--json"}).output);
  EXPECT_EQ(json["children"][2]["title"], utf8(longest.substr(1) + u"🚀"));
}

TEST_F(CompanionPreview, failsIfTheOutputWouldBeFarLargerThanTheFile) {
  BinaryFile file(2);
  const std::uint32_t leaf = file.leaf(std::string(300, 'x'));  // no longer than a preview prints
  const std::vector<std::uint32_t> leaves(30'000, leaf);
  const Bytes bytes = file.bytes(file.folder("", leaves));
  machine_.files.put(bookmarks, std::string(bytes.text()));
  const Ending ending = run({"preview", "--all", "--json"});
  EXPECT_EQ(ending.status, 1);
  EXPECT_THAT(ending.error, HasSubstr("so often that a preview of it would be far larger than the file"));
  EXPECT_LE(ending.output.size(), 8 * bytes.size() + 8'000'000);
  EXPECT_EQ(run({"preview"}).status, 0) << "which is not so large";
}

TEST_F(CompanionPreview, failsWithoutAFile) {
  machine_.files.remove(bookmarks);
  expectFailure({"preview"}, "The file “Bookmarks.plist” couldn’t be opened");
  expectFailure({"preview", "--json"}, "couldn’t be opened");
}

TEST_F(CompanionPreview, failsOnAFileThatIsNoBookmarkFile) {
  machine_.files.put(bookmarks, fileOf(PlistValue(1)));
  expectFailure({"preview"}, "Unrecognised Safari bookmark format. No changes made.");
}

TEST_F(CompanionPreview, failsOnExponentiallySharedFolders) {
  BinaryFile file(2);
  std::uint32_t folder = file.folder("0", {file.leaf("z"), file.leaf("a")});
  for (int level = 1; level < 100; ++level) folder = file.folder(std::to_string(level), {folder, folder});
  machine_.files.put(bookmarks, std::string(file.bytes(file.folder("", {folder})).text()));
  for (const char* option : {"--all", "--json"}) {
    const Ending ending = run({"preview", option});
    EXPECT_EQ(ending.status, 1);
    EXPECT_THAT(ending.error, HasSubstr("so often that a preview of it would "));
  }
  expectEnding(run({"check"}), 1, "Your Safari bookmarks are not in order.\n");
}

// Sorts

using CompanionSort = CompanionCommandTest;

TEST_F(CompanionSort, sortsUnattendedAndPrintsTheProgramsReport) {
  expectEnding(run({"sort"}), 0,
               "Bookmarks sorted: Folders come first, followed by bookmarks in alphabetical order. You can reopen "
               "Safari.\n\nBackup: " +
                   backups + "/" + newBackup + "\n");
  EXPECT_EQ(outlineOf(machine_.files.content(bookmarks)),
            "<History> Bar[Z[a b] apple Item 2 Item 10] Menu[F[1 2] a] com.apple.ReadingList[z a]");
  EXPECT_THAT(machine_.userInterface.alerts(), IsEmpty());
}

TEST_F(CompanionSort, printsNothingForAFileInOrder) {
  putSorted();
  expectEnding(run({"sort"}), 0, "");
}

TEST_F(CompanionSort, printsNothingIfQuiet) {
  expectEnding(run({"sort", "--quiet"}), 0, "");
  EXPECT_TRUE(machine_.files.files().contains(backups + "/" + newBackup)) << "it sorts nevertheless";
  expectEnding(run({"check"}), 0, "Your Safari bookmarks are already in order.\n");
}

TEST_F(CompanionSort, sortsANamedFile) {
  machine_.files.put(otherFile, fileOf(unsortedTree()));
  EXPECT_EQ(run({"sort", "Other.plist"}).status, 0);
  EXPECT_NE(machine_.files.content(otherFile), fileOf(unsortedTree()));
  EXPECT_EQ(machine_.files.content(bookmarks), fileOf(unsortedTree()));
}

TEST_F(CompanionSort, backsUpANamedFileInAPlaceOfItsOwn) {
  machine_.files.put(otherFile, fileOf(unsortedTree()));
  EXPECT_THAT(run({"sort", "Other.plist"}).output, EndsWith("Backup: " + otherBackups + "/" + newBackup + "\n"));
  EXPECT_EQ(machine_.files.content(otherBackups + "/" + newBackup), fileOf(unsortedTree()));
  EXPECT_EQ(machine_.files.mode(otherBackups), 0700U);
  EXPECT_EQ(machine_.files.mode(otherBackups + "/" + newBackup), 0600U);
  EXPECT_FALSE(machine_.files.files().contains(backups + "/" + newBackup));
}

TEST_F(CompanionSort, knowsTheUsersOwnFileByItsPath) {
  EXPECT_EQ(run({"sort", bookmarks}).status, 0);
  EXPECT_TRUE(machine_.files.files().contains(backups + "/" + newBackup));
}

TEST_F(CompanionSort, readsNothingWhileSafariRuns) {
  machine_.applications.start(safari);
  for (const std::vector<std::string>& arguments :
       {std::vector<std::string>{"sort"}, {"sort", "-q"}, {"sort", "/home/user/Other.plist"}}) {
    const Ending ending = run(arguments);
    EXPECT_EQ(ending.status, 75);
    EXPECT_EQ(ending.output, "");
    EXPECT_EQ(ending.error, "quilleryctl: Safari is running; nothing was read\n");
  }
  EXPECT_EQ(machine_.journal.count("read"), 0);
}

TEST_F(CompanionSort, readsNothingIfSafariIsUnknown) {
  putBackup("Bookmarks-A.plist", fileOf(sortedTree()), "2026-09-21 10:00:01");
  machine_.applications.setUnresponsive(true);
  for (const std::vector<std::string>& arguments :
       {std::vector<std::string>{"sort"}, {"sort", "-q"}, {"restore", "Bookmarks-A.plist"}}) {
    const Ending ending = run(arguments);
    EXPECT_EQ(ending.status, 75);
    EXPECT_EQ(ending.output, "");
    EXPECT_EQ(ending.error,
              "quilleryctl: It is unknown whether Safari is running, so your bookmarks have not been changed. Try "
              "again later. The session bus couldn’t be asked: Connection timed out.\n");
  }
  EXPECT_EQ(machine_.journal.count("read"), 0);
}

TEST_F(CompanionSort, changesNothingIfSafariBecomesUnknown) {
  machine_.journal.after("parse", [&](const auto&) { machine_.applications.setUnresponsive(true); });
  const Ending ending = run({"sort"});
  EXPECT_EQ(ending.status, 75);
  EXPECT_EQ(ending.output, "");
  EXPECT_THAT(ending.error, StartsWith("quilleryctl: It is unknown whether Safari is running, "));
  EXPECT_EQ(machine_.files.content(bookmarks), fileOf(unsortedTree()));
}

TEST_F(CompanionSort, reportsThatSafariCouldNotBeLookedFor) {
  machine_.applications.leaveSession();
  const std::string note =
      "quilleryctl: there is no login session, so Safari could not be looked for and counts as closed\n";
  const Ending sorted = run({"sort"});
  EXPECT_EQ(sorted.status, 0);
  EXPECT_THAT(sorted.output, StartsWith("Bookmarks sorted: "));
  EXPECT_EQ(sorted.error, note);
  EXPECT_EQ(run({"restore", newBackup}).error, note);
  expectEnding(run({"sort", "--quiet"}), 0, "");
}

TEST_F(CompanionSort, reportsAFailureOnceWithTheFilesName) {
  machine_.files.remove(bookmarks);
  const std::string missing =
      "quilleryctl: The file “Bookmarks.plist” couldn’t be opened: No such file or directory (" + bookmarks + ").\n";
  for (const std::vector<std::string>& arguments : {std::vector<std::string>{"sort"}, {"sort", "-q"}}) {
    const Ending ending = run(arguments);
    EXPECT_EQ(ending.status, 1);
    EXPECT_EQ(ending.output, "");
    EXPECT_EQ(ending.error, missing);
  }
  machine_.files.put(otherFile, fileOf(PlistValue(1)));
  for (const char* command : {"sort", "preview", "check"}) {
    const Ending ending = run({command, "Other.plist"});
    EXPECT_EQ(ending.output, "");
    EXPECT_EQ(ending.error, "quilleryctl: " + otherFile + ": Unrecognised Safari bookmark format. No changes made.\n");
  }
}

TEST_F(CompanionSort, hintsAtTheExportOfABrowser) {
  machine_.files.put(otherFile, "<!DOCTYPE NETSCAPE-Bookmark-file-1>\n<TITLE>Bookmarks</TITLE>");
  for (const char* command : {"sort", "preview", "check"})
    EXPECT_THAT(run({command, "Other.plist"}).error,
                AllOf(StartsWith("quilleryctl: " + otherFile + ": "),
                      EndsWith(" It is a browser’s HTML export, and no property list as Safari’s own file is.\n")));
}

TEST_F(CompanionSort, sortsSeveralFiles) {
  machine_.files.put(otherFile, fileOf(unsortedTree()));
  machine_.applications.leaveSession();
  const Ending ending = run({"sort", bookmarks, "None.plist", "Other.plist"});
  EXPECT_EQ(ending.status, 1);
  EXPECT_THAT(ending.output, AllOf(HasSubstr("In " + bookmarks + " folders"), HasSubstr("In Other.plist folders")));
  EXPECT_THAT(ending.error, MatchesRegex("quilleryctl: there is no login session[^\n]*\n[^\n]*None.plist[^\n]*\n"));
  for (const std::string& file : {bookmarks, otherFile})
    EXPECT_NE(machine_.files.content(file), fileOf(unsortedTree()));
}

TEST_F(CompanionSort, writesACopyToANewFile) {
  const std::string sortedContent = [&] {
    machine_.files.put(otherFile, fileOf(unsortedTree()));
    run({"sort", "-q", "Other.plist"});
    return machine_.files.content(otherFile);
  }();
  machine_.applications.start(safari);
  expectEnding(run({"sort", "-o", "Copy.plist"}), 0, "");
  EXPECT_EQ(machine_.files.content("/home/user/folder/Copy.plist"), sortedContent);
  EXPECT_EQ(machine_.files.content(bookmarks), fileOf(unsortedTree()));
  expectFailure({"sort", "--output=Copy.plist"}, "File exists");
  expectFailure({"sort", "-o", bookmarks, bookmarks}, "File exists");
  expectEnding(run({"sort", "-o", "-"}), 0, sortedContent);
  expectEnding(run({"sort", "-o", "-", "Copy.plist"}), 0, sortedContent);
  EXPECT_FALSE(machine_.files.files().contains(backups + "/" + newBackup)) << "nothing is replaced";
}

TEST_F(CompanionSort, sortsStandardInputToStandardOutput) {
  machine_.files.put(otherFile, "");
  const Ending ending = runWithInput(fileOf(unsortedTree()), {"sort", "-"});
  EXPECT_EQ(ending.status, 0);
  EXPECT_EQ(ending.error, "");
  EXPECT_EQ(outlineOf(ending.output),
            "<History> Bar[Z[a b] apple Item 2 Item 10] Menu[F[1 2] a] com.apple.ReadingList[z a]");
  EXPECT_EQ(runWithInput("damaged", {"sort", "-"}).output, "");
  EXPECT_EQ(runWithInput(fileOf(unsortedTree()), {"sort", "-o", "Out.plist", "-"}).output, "");
  EXPECT_EQ(machine_.files.content("/home/user/folder/Out.plist"), ending.output);
}

TEST_F(CompanionSort, speaksOfANamedFile) {
  machine_.files.put(otherFile, fileOf(unsortedTree()));
  EXPECT_THAT(run({"sort", "Other.plist"}).output,
              StartsWith("Bookmarks sorted: In Other.plist folders come first, followed by bookmarks in alphabetical "
                         "order.\n\nBackup: "));
}

TEST_F(CompanionSort, changesNothingIfSafariStartsBeforeIt) {
  machine_.journal.before(
      "running?", [&](const auto&) { machine_.applications.start(safari); }, 2);
  const Ending ending = run({"sort"});
  EXPECT_EQ(ending.status, 75);
  EXPECT_EQ(ending.output, "");
  EXPECT_EQ(ending.error, "quilleryctl: Safari was started meanwhile; the file was left as it was\n");
}

TEST_F(CompanionSort, escapesControlCharactersInPaths) {
  const Ending ending = run({"sort", "/home/\x1b[2J"});
  EXPECT_THAT(ending.error, AllOf(HasSubstr("\\u{1B}[2J"), Not(HasSubstr("\x1b"))));
  machine_.files.put("/home/user/\x1b[2J", fileOf(unsortedTree()));
  EXPECT_THAT(run({"sort", "/home/user/\x1b[2J"}).output, AllOf(HasSubstr("\\u{1B}[2J"), Not(HasSubstr("\x1b"))));
}

// Checks

using CompanionCheck = CompanionCommandTest;

TEST_F(CompanionCheck, reportsTheOrderByItsStatus) {
  expectEnding(run({"check"}), 1, "Your Safari bookmarks are not in order.\n");
  expectEnding(run({"check", "--quiet"}), 1, "");
  putSorted();
  expectEnding(run({"check"}), 0, "Your Safari bookmarks are already in order.\n");
  expectEnding(run({"check", "-q"}), 0, "");
}

TEST_F(CompanionCheck, onlyReadsTheFileEvenWhileSafariRuns) {
  machine_.applications.start(safari);
  run({"check", "-q"});
  EXPECT_THAT(machine_.journal.entries(), ElementsAre("read " + bookmarks, "parse"));
}

TEST_F(CompanionCheck, readsANamedFile) {
  machine_.files.put("/home/user/folder/Other.plist", fileOf(sortedTree()));
  expectEnding(run({"check", "Other.plist"}), 0, "Other.plist is already in order.\n");
  machine_.files.put(otherFile, fileOf(unsortedTree()));
  expectEnding(run({"check", "Other.plist"}), 1, "Other.plist is not in order.\n");
  EXPECT_EQ(run({"check", "../Library/Safari/Bookmarks.plist"}).status, 3) << "virtual files have no such path";
}

TEST_F(CompanionCheck, readsSeveralFiles) {
  machine_.files.put(otherFile, fileOf(sortedTree()));
  expectEnding(run({"check", "Other.plist", bookmarks}), 1,
               "Other.plist is already in order.\n" + bookmarks + " is not in order.\n");
  EXPECT_EQ(run({"check", "None.plist", bookmarks}).status, 3);
}

TEST_F(CompanionCheck, printsJson) {
  machine_.files.put(otherFile, fileOf(sortedTree()));
  expectEnding(run({"check", "--json", bookmarks, "Other.plist"}), 1,
               "{\"file\": \"" + bookmarks + "\", \"isInOrder\": false}\n{\"file\": \"" + otherFile +
                   "\", \"isInOrder\": true}\n");
}

TEST_F(CompanionCheck, failsWithStatus3) {
  expectFailure({"check", "/home/user/Missing.plist"}, "couldn’t be opened", 3);
  machine_.files.put(bookmarks, "neither");
  EXPECT_EQ(run({"check"}).status, 3);
  machine_.files.put(bookmarks, fileOf(PlistValue::dictionary({})));
  expectFailure({"check"}, "Unrecognised Safari bookmark format.", 3);
}

// Backups

using CompanionBackups = CompanionCommandTest;

TEST_F(CompanionBackups, areListedWithTimeSizeAndBookmarks) {
  putBackup("Bookmarks-A.plist", fileOf(unsortedTree()), "2026-09-21 10:00:01");
  putBackup("Bookmarks-BB.plist", "damaged", "2026-09-22 23:59:59");
  const std::string size = std::to_string(fileOf(unsortedTree()).size());
  ASSERT_EQ(size.size(), 3U) << "narrower than its heading";
  expectEnding(run({"backups"}), 0,
               "NAME                TIME                 SIZE  BOOKMARKS\n"
               "Bookmarks-BB.plist  2026-09-22 23:59:59     7    damaged\n"
               "Bookmarks-A.plist   2026-09-21 10:00:01   " +
                   size + "         10  current\n2 backups, " + std::to_string(fileOf(unsortedTree()).size() + 7) +
                   " bytes in total\n");
}

TEST_F(CompanionBackups, haveTheirTimesInTheUsersTimeZone) {
  putBackup("Bookmarks-A.plist", "", "2026-01-31 23:30:00");
  machine_.calendars.moveTo("Europe/Berlin");
  EXPECT_THAT(run({"backups"}).output, HasSubstr("  2026-02-01 00:30:00  "));
}

TEST_F(CompanionBackups, areThoseOfOneFile) {
  putBackup("Bookmarks-A.plist", fileOf(unsortedTree()), "2026-09-21 10:00:01");
  machine_.files.put(otherFile, "other");
  machine_.files.put(otherBackups + "/Bookmarks-O.plist", "other");
  EXPECT_THAT(run({"backups"}).output, AllOf(HasSubstr("Bookmarks-A.plist"), Not(HasSubstr("Bookmarks-O.plist"))));
  const Ending ending = run({"backups", "Other.plist"});
  EXPECT_EQ(ending.status, 0);
  EXPECT_THAT(ending.output,
              AllOf(HasSubstr("Bookmarks-O.plist"), HasSubstr("  current\n"), Not(HasSubstr("Bookmarks-A.plist"))));
  expectEnding(run({"backups", "--quiet", "Other.plist"}), 0, "Bookmarks-O.plist\n");
  expectEnding(run({"backups", bookmarks, "-q"}), 0, "Bookmarks-A.plist\n");
  EXPECT_EQ(run({"backups", "/home/user/folder/None.plist"}).output, "There are no backups.\n");
}

TEST_F(CompanionBackups, areNamesAloneIfQuiet) {
  putBackup("Bookmarks-A.plist", "", "2026-09-21 10:00:01");
  putBackup("Bookmarks-B\x1b.plist", "", "2026-09-21 10:00:02");
  expectEnding(run({"backups", "-q"}), 0, "Bookmarks-B\\u{1B}.plist\nBookmarks-A.plist\n");
  EXPECT_EQ(machine_.journal.count("read"), 0);
}

TEST_F(CompanionBackups, areListedAsJson) {
  putBackup("Bookmarks-A.plist", fileOf(unsortedTree()), "2026-09-21 10:00:01");
  putBackup("Bookmarks-B.plist", "damaged", "2026-09-22 23:59:59");
  machine_.calendars.moveTo("Europe/Berlin");
  const std::size_t size = fileOf(unsortedTree()).size();
  const auto json = nlohmann::json::parse(run({"backups", "--json"}).output);
  EXPECT_EQ(json, (nlohmann::json{{"file", bookmarks},
                                  {"size", size + 7},
                                  {"backups",
                                   {{{"name", "Bookmarks-B.plist"},
                                     {"path", backups + "/Bookmarks-B.plist"},
                                     {"time", "2026-09-22T23:59:59Z"},
                                     {"size", 7},
                                     {"bookmarks", nullptr},
                                     {"isCurrent", false}},
                                    {{"name", "Bookmarks-A.plist"},
                                     {"path", backups + "/Bookmarks-A.plist"},
                                     {"time", "2026-09-21T10:00:01Z"},
                                     {"size", size},
                                     {"bookmarks", 10},
                                     {"isCurrent", true}}}}}));
  EXPECT_EQ(nlohmann::json::parse(run({"backups", "--json", "None.plist"}).output)["backups"].size(), 0U);
}

TEST_F(CompanionBackups, reportThatThereAreNone) {
  expectEnding(run({"backups"}), 0, "There are no backups.\n");
  expectEnding(run({"backups", "-q"}), 0, "");
}

TEST_F(CompanionBackups, areListedEvenWithoutABookmarkFile) {
  putBackup("Bookmarks-A.plist", fileOf(unsortedTree()), "2026-09-21 10:00:01");
  machine_.files.remove(bookmarks);
  const Ending ending = run({"backups"});
  EXPECT_EQ(ending.status, 0);
  EXPECT_THAT(ending.output, AllOf(HasSubstr("Bookmarks-A.plist"), Not(HasSubstr("current"))));
  EXPECT_THAT(ending.error, StartsWith("quilleryctl: The file “Bookmarks.plist” couldn’t be opened"));
}

TEST_F(CompanionBackups, failIfTheFolderCannotBeListed) {
  machine_.files.failOn("files in", EACCES);
  expectFailure({"backups"}, "Permission denied");
}

TEST_F(CompanionBackups, haveColorsOnATerminal) {
  putBackup("Bookmarks-A.plist", fileOf(unsortedTree()), "2026-09-21 10:00:01");
  machine_.processes.startInTerminal();
  machine_.processes.setVariable("TERM", "xterm");
  EXPECT_THAT(run({"backups"}).output,
              AllOf(StartsWith("\x1b[1mNAME"), HasSubstr("  10  \x1b[32mcurrent\x1b[0m\n1 backup, ")));
}

// Restores

using CompanionRestore = CompanionCommandTest;

TEST_F(CompanionRestore, restoresABackupByItsName) {
  putBackup("Bookmarks-A.plist", fileOf(sortedTree()), "2026-09-21 10:00:01");
  expectEnding(run({"restore", "Bookmarks-A.plist"}), 0,
               "Bookmarks restored: Your bookmarks are as they were when the backup was made. You can reopen "
               "Safari.\n\nBackup: " +
                   backups + "/" + newBackup + "\n");
  EXPECT_EQ(machine_.files.content(bookmarks), fileOf(sortedTree()));
  expectEnding(run({"restore", "Bookmarks-A.plist"}), 0,
               "Already restored: Your Safari bookmarks are already the same as this backup.\n");
  expectEnding(run({"restore", "-q", newBackup}), 0, "");
  EXPECT_EQ(machine_.files.content(bookmarks), fileOf(unsortedTree()));
}

TEST_F(CompanionRestore, restoresABackupByItsPath) {
  putBackup("Bookmarks-A.plist", fileOf(sortedTree()), "2026-09-21 10:00:01");
  EXPECT_EQ(run({"restore", backups + "/Bookmarks-A.plist"}).status, 0);
  EXPECT_EQ(machine_.files.content(bookmarks), fileOf(sortedTree()));
}

TEST_F(CompanionRestore, refusesTheBackupOfAnotherFile) {
  machine_.files.put(otherFile, fileOf(unsortedTree()));
  const std::string foreign = otherBackups + "/Bookmarks-O.plist";
  machine_.files.put(foreign, fileOf(sortedTree()));
  const std::string hint = "add the file and --foreign";
  expectFailure({"restore", foreign}, hint);
  expectFailure({"restore", foreign, bookmarks}, hint);
  expectFailure({"restore", "--foreign", foreign}, hint);
  expectFailure({"restore", "Bookmarks-O.plist"}, "there is no backup “Bookmarks-O.plist” of " + bookmarks);
  machine_.files.put("/home/user/folder/./old.plist", fileOf(rootNode({})));
  expectFailure({"restore", "./old.plist"}, hint);
  EXPECT_EQ(machine_.files.content(bookmarks), fileOf(unsortedTree()));
}

TEST_F(CompanionRestore, restoresTheBackupOfAnotherFileIfAsked) {
  const std::string foreign = otherBackups + "/Bookmarks-O.plist";
  machine_.files.put(foreign, fileOf(sortedTree()));
  expectEnding(run({"restore", "--foreign", foreign, bookmarks}), 0,
               "Bookmarks replaced: " + bookmarks + " has the content of " + foreign + " now.\n\nBackup: " + backups +
                   "/" + newBackup + "\n");
  EXPECT_EQ(machine_.files.content(bookmarks), fileOf(sortedTree()));
}

TEST_F(CompanionRestore, undoesTheSortOfANamedFile) {
  machine_.files.put("/home/user/folder/Other.plist", fileOf(unsortedTree()));
  run({"sort", "Other.plist"});
  EXPECT_EQ(run({"restore", newBackup, "Other.plist"}).status, 0);
  EXPECT_EQ(machine_.files.content("/home/user/folder/Other.plist"), fileOf(unsortedTree()));
  EXPECT_EQ(machine_.journal.count("write atomically"), 2) << "the user's own file is never written";
}

TEST_F(CompanionRestore, refusesAFileThatIsNoBackup) {
  putBackup("Bookmarks-A.plist", fileOf(PlistValue(1)), "2026-09-21 10:00:01");
  const Ending ending = run({"restore", "Bookmarks-A.plist"});
  EXPECT_EQ(ending.status, 1);
  EXPECT_EQ(ending.output, "");
  EXPECT_EQ(ending.error,
            "quilleryctl: " + backups + "/Bookmarks-A.plist: Unrecognised Safari bookmark format. No changes made.\n");
  expectFailure({"restore", "Bookmarks-B.plist"}, "there is no backup “Bookmarks-B.plist” of " + bookmarks);
  EXPECT_EQ(machine_.files.content(bookmarks), fileOf(unsortedTree()));
}

TEST_F(CompanionRestore, takesTheUniqueBeginningOfAName) {
  putBackup("Bookmarks-A1.plist", fileOf(sortedTree()), "2026-09-21 10:00:01");
  putBackup("Bookmarks-A12.plist", fileOf(rootNode({})), "2026-09-21 10:00:02");
  putBackup("Bookmarks-B.plist", fileOf(rootNode({})), "2026-09-21 10:00:03");
  expectFailure({"restore", "A"}, "“A” is the beginning of 2 backups of " + bookmarks);
  expectFailure({"restore", "Bookmarks-"}, "“Bookmarks-” is the beginning of 3 backups of ");
  expectFailure({"restore", ""}, "is the beginning of 3 backups of ");
  expectFailure({"restore", "C"}, "there is no backup “C” of " + bookmarks);
  EXPECT_EQ(run({"restore", "A1."}).status, 0);
  EXPECT_EQ(machine_.files.content(bookmarks), fileOf(sortedTree()));
  EXPECT_EQ(run({"restore", "Bookmarks-B"}).status, 0);
  EXPECT_EQ(machine_.files.content(bookmarks), fileOf(rootNode({})));
}

TEST_F(CompanionRestore, speaksOfANamedFile) {
  machine_.files.put(otherFile, fileOf(unsortedTree()));
  machine_.files.put(otherBackups + "/Bookmarks-O.plist", fileOf(sortedTree()));
  EXPECT_THAT(run({"restore", "O", "Other.plist"}).output,
              StartsWith("Bookmarks restored: Other.plist is as it was when the backup was made.\n\nBackup: "));
  EXPECT_EQ(run({"restore", "O", "Other.plist"}).output,
            "Already restored: Other.plist is already the same as this backup.\n");
}

using CompanionUndo = CompanionCommandTest;

TEST_F(CompanionUndo, restoresTheLastBackupAndUndoesThat) {
  run({"sort"});
  const std::string after = machine_.files.content(bookmarks);
  EXPECT_THAT(run({"undo"}).output, StartsWith("Bookmarks restored: Your bookmarks are as they were when the backup"));
  EXPECT_EQ(machine_.files.content(bookmarks), fileOf(unsortedTree()));
  expectEnding(run({"undo", "--quiet"}), 0, "");
  EXPECT_EQ(machine_.files.content(bookmarks), after);
}

TEST_F(CompanionUndo, passesOverABackupOfTheSameBytes) {
  putBackup("Bookmarks-A.plist", fileOf(sortedTree()), "2026-09-21 10:00:01");
  putBackup("Bookmarks-B.plist", fileOf(unsortedTree()), "2026-09-21 10:00:02");
  EXPECT_EQ(run({"undo"}).status, 0);
  EXPECT_EQ(machine_.files.content(bookmarks), fileOf(sortedTree()));
}

TEST_F(CompanionUndo, worksOnANamedFile) {
  machine_.files.put(otherFile, fileOf(unsortedTree()));
  run({"sort", "Other.plist"});
  EXPECT_EQ(run({"undo", "Other.plist"}).status, 0);
  EXPECT_EQ(machine_.files.content(otherFile), fileOf(unsortedTree()));
  EXPECT_EQ(machine_.files.content(bookmarks), fileOf(unsortedTree()));
}

TEST_F(CompanionUndo, bringsAMissingFileBack) {
  putBackup("Bookmarks-A.plist", fileOf(sortedTree()), "2026-09-21 10:00:01");
  machine_.files.remove(bookmarks);
  EXPECT_EQ(run({"undo"}).status, 0);
  EXPECT_EQ(machine_.files.content(bookmarks), fileOf(sortedTree()));
}

TEST_F(CompanionUndo, failsWithoutABackup) {
  expectFailure({"undo"}, "there is no backup of " + bookmarks + " that differs from it");
}

TEST_F(CompanionUndo, readsNothingWhileSafariRuns) {
  putBackup("Bookmarks-A.plist", fileOf(sortedTree()), "2026-09-21 10:00:01");
  machine_.applications.start(safari);
  EXPECT_EQ(run({"undo"}).status, 75);
  EXPECT_EQ(machine_.journal.count("read"), 0);
}

TEST_F(CompanionRestore, readsNothingWhileSafariRuns) {
  putBackup("Bookmarks-A.plist", fileOf(sortedTree()), "2026-09-21 10:00:01");
  machine_.applications.start(safari);
  const Ending ending = run({"restore", "Bookmarks-A.plist"});
  EXPECT_EQ(ending.status, 75);
  EXPECT_EQ(ending.output, "");
  EXPECT_EQ(ending.error, "quilleryctl: Safari is running; nothing was read\n");
  EXPECT_EQ(machine_.journal.count("read"), 0);
}

// The next scheduled sort

using CompanionNext = CompanionCommandTest;

TEST_F(CompanionNext, printsTheNextScheduledSort) {
  machine_.defaults.put("dailyEnabled", true);
  machine_.defaults.put("dailyHour", 9);
  machine_.defaults.put("dailyMinute", 5);
  expectEnding(run({"next"}), 0, "Monday 2026-09-21 09:05\n");
  machine_.defaults.put("scheduleDays", numberList({1, 7}));
  expectEnding(run({"next", "--quiet"}), 0, "Saturday 2026-09-26 09:05\n");
  machine_.calendars.moveTo("Pacific/Auckland");
  machine_.defaults.put("scheduleDays", numberList({2}));
  expectEnding(run({"next"}), 0, "Monday 2026-09-28 09:05\n");
}

TEST_F(CompanionNext, reportsThatNoSortIsScheduled) {
  expectEnding(run({"next"}), 0, "No sort is scheduled.\n");
  machine_.defaults.put("dailyEnabled", true);
  machine_.defaults.put("scheduleDays", numberList({}));
  expectEnding(run({"next"}), 0, "No sort is scheduled.\n");
  expectEnding(run({"next", "-q"}), 0, "");
}

TEST_F(CompanionNext, reportsThatSortingIsStopped) {
  machine_.defaults.put("dailyEnabled", true);
  machine_.defaults.put("sortingPaused", true);
  expectEnding(run({"next"}), 0, "No sort is scheduled: automatic sorting is stopped.\n");
}

TEST_F(CompanionNext, printsJson) {
  expectEnding(run({"next", "--json"}), 0, "{\"next\": null, \"isStopped\": false}\n");
  machine_.defaults.put("dailyEnabled", true);
  machine_.defaults.put("dailyHour", 9);
  machine_.calendars.moveTo("Pacific/Auckland");
  expectEnding(run({"next", "--json"}), 0, "{\"next\": \"2026-09-21T21:00:00Z\", \"isStopped\": false}\n");
  machine_.defaults.put("sortingPaused", true);
  expectEnding(run({"next", "--json"}), 0, "{\"next\": null, \"isStopped\": true}\n");
}

TEST_F(CompanionNext, readsNoFile) {
  run({"next"});
  EXPECT_EQ(machine_.journal.count("read"), 0);
}

// Usage, help and output

TEST_F(CompanionCommandTest, printsOneLineIfUsedWrongly) {
  const Ending ending = run({"undo", "a", "\x1b[2J"});
  EXPECT_EQ(ending.status, 2);
  EXPECT_EQ(ending.output, "");
  EXPECT_EQ(ending.error, "quilleryctl: “\\u{1B}[2J” is one argument too many for “undo”; see quilleryctl --help\n");
  EXPECT_THAT(machine_.journal.entries(), IsEmpty());
}

TEST_F(CompanionCommandTest, printsItsHelpAndVersion) {
  const Ending help = run({"--help"});
  EXPECT_EQ(help.status, 0);
  EXPECT_EQ(run({"help"}).output, help.output);
  EXPECT_EQ(run({"help", "sort"}).output, help.output);
  EXPECT_THAT(help.output, AllOf(StartsWith("usage: quilleryctl "), HasSubstr("Exit status:")));
  expectEnding(run({"--version"}), 0, "quilleryctl " + std::string(product::version) + "\n");
}

// A stream buffer on which every write fails.
class FullDisk : public std::streambuf {};

TEST_F(CompanionCommandTest, hasAStatusForOutputThatCannotBeWritten) {
  FullDisk disk;
  const auto runOnFullDisk = [&](const std::string& command) {
    std::streambuf* const previous = std::cout.rdbuf(&disk);
    std::ostringstream errors;
    std::streambuf* const previousErrors = std::cerr.rdbuf(errors.rdbuf());
    const int status = runCompanion({command}, machine_.loop.now());
    std::cerr.rdbuf(previousErrors);
    std::cout.rdbuf(previous);
    EXPECT_EQ(errors.str(), "quilleryctl: not all of the output could be written\n");
    return status;
  };
  EXPECT_EQ(runOnFullDisk("preview"), 74);
  EXPECT_EQ(runOnFullDisk("check"), 1) << "the status is that the file is not in order";
  EXPECT_EQ(runOnFullDisk("sort"), 74);
  EXPECT_NE(machine_.files.content(bookmarks), fileOf(unsortedTree()));
  EXPECT_EQ(runOnFullDisk("check"), 74);
}

}  // namespace
