// The built command-line companion on real files, in a home folder of its own.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <pty.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <filesystem>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "platform/product.h"
#include "tests/platform/linux/separate_mounts.h"
#include "tests/support/bookmark_places.h"
#include "tests/support/bookmark_trees.h"
#include "tests/support/child_process.h"
#include "tests/support/environment_scope.h"
#include "tests/support/program.h"
#include "tests/support/scratch_folder.h"
#include "tests/support/session_bus.h"
#include "tests/support/virtual_machine.h"

namespace {

using testing::AllOf;
using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using testing::MatchesRegex;
using testing::Not;
using testing::StartsWith;

std::string demoFile(const std::string& format) {
  return contentOf(std::string(QUILLERY_TEST_DATA) + "/demo/Bookmarks." + format + ".plist");
}

constexpr const char* noBus = "unix:path=/nonexistent";
const std::string noSession =
    "quilleryctl: there is no login session, so Safari could not be looked for and counts as closed\n";

// A session bus on which NameOwner owns names.
class OwnBus {
 public:
  std::string address() const { return bus_.address(); }
  std::string socket() const { return place_.path("bus"); }

 private:
  ScratchFolder place_;
  SessionBus bus_{place_};
  EnvironmentScope address_{"DBUS_SESSION_BUS_ADDRESS", bus_.address()};
};

// A terminal for the output of a program.
class PseudoTerminal {
 public:
  PseudoTerminal() {
    EXPECT_EQ(openpty(&master_, &end_, nullptr, nullptr, nullptr), 0);
    fcntl(master_, F_SETFD, FD_CLOEXEC);
  }
  ~PseudoTerminal() {
    close(master_);
    if (end_ != -1) close(end_);
  }
  PseudoTerminal(const PseudoTerminal&) = delete;
  PseudoTerminal& operator=(const PseudoTerminal&) = delete;

  int end() const { return end_; }
  // What has been written to it, once its programs have ended. Closes the end: only then is nothing still on its way.
  std::string text() {
    close(std::exchange(end_, -1));
    std::string all;
    std::array<char, 256> part{};
    for (ssize_t count = 0; (count = read(master_, part.data(), part.size())) > 0;)
      all.append(part.data(), static_cast<std::size_t>(count));
    return all;
  }

 private:
  int master_ = -1;
  int end_ = -1;
};

class CompanionTest : public testing::Test {
 protected:
  CompanionTest() { std::filesystem::create_directories(scratch_.path("Library/Safari")); }

  // Runs the companion, without a session bus unless one is given.
  Ending companion(const std::vector<std::string>& arguments, const std::string& bus = noBus) const {
    return run(QUILLERYCTL_EXECUTABLE, arguments, environment(bus));
  }
  // Runs it in a shell, as the command "$0" with the arguments "$@" and what `script` puts around it.
  Ending companionInShell(const std::string& script, std::vector<std::string> arguments,
                          const std::string& bus = noBus) const {
    arguments.insert(arguments.begin(), {"-c", script, QUILLERYCTL_EXECUTABLE});
    return run("/bin/sh", arguments, environment(bus));
  }
  Environment environment(const std::optional<std::string>& bus = noBus) const {
    return {{"HOME", scratch_.path()},
            {"DBUS_SESSION_BUS_ADDRESS", bus},
            {"LANG", "en_US.UTF-8"},
            {"LC_ALL", std::nullopt},
            {"LC_COLLATE", std::nullopt}};
  }

  // The path of the only backup.
  std::string backup() const {
    const std::vector<std::string> names = namesIn(backups_);
    EXPECT_EQ(names.size(), 1U);
    return names.empty() ? "" : backups_ + "/" + names.front();
  }

  ScratchFolder scratch_;
  std::string bookmarks_ = scratch_.path("Library/Safari/Bookmarks.plist");
  std::string backups_ = scratch_.path("Library/Application Support/Quillery/Backups");
};

class CompanionFormats : public CompanionTest, public testing::WithParamInterface<const char*> {};

INSTANTIATE_TEST_SUITE_P(Format, CompanionFormats, testing::Values("binary", "xml"),
                         [](const auto& format) { return format.param; });

TEST_P(CompanionFormats, sortsAndNamesTheBackup) {
  const std::string before = demoFile(GetParam());
  makeFile(bookmarks_, before);
  const Ending ending = companion({"sort"});
  EXPECT_EQ(ending.status, 0);
  EXPECT_EQ(ending.output,
            "Bookmarks sorted: Folders come first, followed by bookmarks in alphabetical order. You can reopen "
            "Safari.\n\nBackup: " +
                backup() + "\n");
  EXPECT_EQ(ending.error, noSession);
  EXPECT_EQ(contentOf(backup()), before);
  EXPECT_THAT(std::filesystem::path(backup()).filename(),
              MatchesRegex("Bookmarks-[0-9A-F]{8}-[0-9A-F]{4}-[0-9A-F]{4}-[0-9A-F]{4}-[0-9A-F]{12}\\.plist"));
  const std::string after = contentOf(bookmarks_);
  EXPECT_THAT(after, StartsWith(std::string(GetParam()) == "xml" ? "<?xml" : "bplist00"));
  EXPECT_NE(outline(treeOf(after)), outline(treeOf(before)));
}

TEST_P(CompanionFormats, findsTheFileInOrderTheSecondTime) {
  makeFile(bookmarks_, demoFile(GetParam()));
  EXPECT_EQ(companion({"sort"}).status, 0);
  const std::string after = contentOf(bookmarks_);
  const Ending second = companion({"sort"});
  EXPECT_EQ(second.status, 0);
  EXPECT_EQ(second.output, "");
  EXPECT_EQ(second.error, noSession);
  EXPECT_EQ(contentOf(bookmarks_), after);
  EXPECT_NE(backup(), "") << "the backup is still the only one";
}

TEST_F(CompanionTest, sortsBothFormatsOfATreeAlike) {
  makeFile(bookmarks_, demoFile("binary"));
  companion({"sort"});
  const PlistValue binary = treeOf(contentOf(bookmarks_));
  makeFile(bookmarks_, demoFile("xml"));
  companion({"sort"});
  EXPECT_EQ(outline(treeOf(contentOf(bookmarks_))), outline(binary));
}

TEST_F(CompanionTest, createsPrivateFilesAndKeepsExistingModes) {
  makeFile(bookmarks_, demoFile("binary"));
  chmod(bookmarks_.c_str(), 0640);
  std::filesystem::create_directory(scratch_.path("Library/Application Support"));
  chmod(scratch_.path("Library/Application Support").c_str(), 0755);
  const mode_t mask = umask(0);
  const Ending ending = companion({"sort"});
  umask(mask);
  EXPECT_EQ(ending.status, 0);
  EXPECT_EQ(modeOf(backup()), 0600U);
  EXPECT_EQ(modeOf(backups_), 0700U);
  EXPECT_EQ(modeOf(scratch_.path("Library/Application Support/Quillery")), 0700U);
  EXPECT_EQ(modeOf(scratch_.path("Library/Application Support")), 0755U);
  EXPECT_EQ(modeOf(bookmarks_), 0640U);
  EXPECT_THAT(namesIn(scratch_.path("Library/Safari")), ElementsAre("Bookmarks.plist")) << "no temporary file is left";
}

TEST_F(CompanionTest, failsWithoutABookmarkFileAndCreatesNothing) {
  const Ending ending = companion({"sort"});
  EXPECT_EQ(ending.status, 1);
  EXPECT_EQ(ending.output, "");
  EXPECT_EQ(ending.error, noSession + "quilleryctl: The file “Bookmarks.plist” couldn’t be opened: No such file or " +
                              "directory (" + bookmarks_ + ").\n");
  EXPECT_THAT(namesIn(scratch_.path("Library")), ElementsAre("Safari"));
}

TEST_F(CompanionTest, leavesAFileThatIsNoBookmarkFile) {
  const std::string content = "<?xml version=\"1.0\"?><plist><dict><key>Title</key><string>a</string></dict></plist>";
  makeFile(bookmarks_, content);
  const Ending ending = companion({"sort"});
  EXPECT_EQ(ending.status, 1);
  EXPECT_EQ(ending.output, "");
  EXPECT_EQ(ending.error,
            noSession + "quilleryctl: " + bookmarks_ + ": Unrecognised Safari bookmark format. No changes made.\n");
  EXPECT_EQ(contentOf(bookmarks_), content);
  EXPECT_FALSE(std::filesystem::exists(backups_));
}

TEST_F(CompanionTest, leavesTheFileIfTheBackupsFolderCannotBeCreated) {
  makeFile(bookmarks_, demoFile("binary"));
  makeFile(scratch_.path("Library/Application Support"), "a file where a folder should be");
  const Ending ending = companion({"sort"});
  EXPECT_EQ(ending.status, 1);
  EXPECT_THAT(ending.error, HasSubstr("couldn’t be created"));
  EXPECT_EQ(contentOf(bookmarks_), demoFile("binary"));
}

TEST_F(CompanionTest, leavesAnOldStyleFileWithABackup) {
  const std::string content =
      "{ Children = ( { WebBookmarkType = WebBookmarkTypeList; Children = ( { WebBookmarkType = WebBookmarkTypeLeaf; "
      "Title = b; }, { WebBookmarkType = WebBookmarkTypeLeaf; Title = a; } ); } ); }";
  makeFile(bookmarks_, content);
  const Ending ending = companion({"sort"});
  EXPECT_EQ(ending.status, 1);
  EXPECT_THAT(ending.error, HasSubstr("can be read but not written"));
  EXPECT_EQ(contentOf(bookmarks_), content);
  EXPECT_EQ(contentOf(backup()), content);
}

TEST_F(CompanionTest, readsNothingWhileSafariRuns) {
  makeFile(bookmarks_, "reading this file would fail");
  const OwnBus bus;
  const Ending before = companion({"sort"}, bus.address());
  EXPECT_EQ(before.status, 1) << "Safari is not running yet";
  NameOwner owner("com.apple.Safari");
  const Ending ending = companion({"sort"}, bus.address());
  EXPECT_EQ(ending.status, 75);
  EXPECT_EQ(ending.output, "");
  EXPECT_EQ(ending.error, "quilleryctl: Safari is running; nothing was read\n");
  EXPECT_FALSE(std::filesystem::exists(backups_));
}

TEST_F(CompanionTest, showsOnATerminalThatItWorksAfterASecond) {
  const ScratchFolder place;
  const SessionBus bus(place);
  kill(bus.process(), SIGSTOP);  // the companion waits two seconds for its reply
  PseudoTerminal terminal;
  Environment there = environment(bus.address());
  there["TERM"] = "xterm";
  run(QUILLERYCTL_EXECUTABLE, {"sort"}, there, terminal.end());
  EXPECT_EQ(terminal.text(), "Working…\r\x1b[K");
}

TEST_F(CompanionTest, changesNothingIfTheBusDoesNotReply) {
  makeFile(bookmarks_, demoFile("xml"));
  const ScratchFolder place;
  const SessionBus bus(place);
  kill(bus.process(), SIGSTOP);
  const Ending ending = companion({"sort"}, bus.address());
  EXPECT_EQ(ending.status, 75);
  EXPECT_EQ(ending.output, "");
  EXPECT_EQ(ending.error,
            "quilleryctl: It is unknown whether Safari is running, so your bookmarks have not been changed. Try again "
            "later. The session bus couldn’t be asked: Connection timed out (" +
                bus.address() + ").\n");
  EXPECT_EQ(contentOf(bookmarks_), demoFile("xml"));
  EXPECT_FALSE(std::filesystem::exists(backups_));
}

TEST_F(CompanionTest, findsSafariWithoutABusInItsEnvironment) {
  makeFile(bookmarks_, demoFile("xml"));
  const OwnBus bus;
  const NameOwner owner("com.apple.Safari");
  Environment cron = environment(std::nullopt);
  cron["XDG_RUNTIME_DIR"] = std::nullopt;
  const std::string status = inChildProcess([&]() -> std::string {
    if (const std::string problem = separateRun(); !problem.empty()) return "no: " + problem;
    const std::string folder = "/run/user/" + std::to_string(geteuid());
    std::filesystem::create_directories(folder);
    std::filesystem::create_symlink(bus.socket(), folder + "/bus");
    return std::to_string(run(QUILLERYCTL_EXECUTABLE, {"sort"}, cron).status.value_or(-1));
  });
  if (status.starts_with("no: ")) GTEST_SKIP() << status;
  EXPECT_EQ(status, "75");
  EXPECT_EQ(contentOf(bookmarks_), demoFile("xml"));
}

TEST_F(CompanionTest, sortsWhileAnotherApplicationRuns) {
  makeFile(bookmarks_, demoFile("xml"));
  const OwnBus bus;
  const NameOwner owner("com.apple.Other");
  EXPECT_EQ(companion({"sort"}, bus.address()).status, 0);
}

// Output that cannot be written

TEST_F(CompanionTest, hasAStatusForOutputThatCannotBeWritten) {
  for (const char* script : {"exec \"$0\" \"$@\" >/dev/full", "exec \"$0\" \"$@\" >&-"}) {
    makeFile(bookmarks_, demoFile("xml"));
    const Ending ending = companionInShell(script, {"sort"});
    EXPECT_EQ(ending.status, 74) << script;
    EXPECT_EQ(ending.error, noSession + "quilleryctl: not all of the output could be written\n");
    EXPECT_NE(contentOf(bookmarks_), demoFile("xml"));
    EXPECT_EQ(companionInShell(script, {"sort", "-q"}).status, 0) << "nothing is printed";
  }
}

TEST_F(CompanionTest, survivesAPipeThatNobodyReads) {
  makeFile(bookmarks_, demoFile("xml"));
  Pipe pipe;
  pipe.closeReader();
  const Ending ending = run(QUILLERYCTL_EXECUTABLE, {"sort"}, environment(), pipe.writer());
  EXPECT_EQ(ending.status, 74);
  EXPECT_EQ(ending.error, noSession + "quilleryctl: not all of the output could be written\n");
  EXPECT_NE(contentOf(bookmarks_), demoFile("xml"));
}

TEST_F(CompanionTest, printsNothingOnItsOwnConnections) {
  makeFile(bookmarks_, demoFile("xml"));
  const ScratchFolder place;
  const SessionBus bus(place);
  EXPECT_EQ(companionInShell("exec \"$0\" \"$@\" <&- >&- 2>&-", {"sort"}, bus.address()).status, 74)
      << "a file or socket took the number of standard output";
  EXPECT_NE(contentOf(bookmarks_), demoFile("xml"));
  EXPECT_EQ(contentOf(backup()), demoFile("xml"));
}

TEST_F(CompanionTest, printsPathsInOneLine) {
  const std::string home = scratch_.path("line\nbreak\u200E");
  std::filesystem::create_directories(home + "/Library/Safari");
  makeFile(home + "/Library/Safari/Bookmarks.plist", demoFile("xml"));
  Environment there = environment();
  there["HOME"] = home;
  const Ending sorted = run(QUILLERYCTL_EXECUTABLE, {"sort"}, there);
  EXPECT_THAT(sorted.output, AllOf(HasSubstr("/line\\u{0A}break\\u{200E}/"), Not(HasSubstr("line\n"))));
  std::filesystem::remove(home + "/Library/Safari/Bookmarks.plist");
  const Ending failed = run(QUILLERYCTL_EXECUTABLE, {"sort"}, there);
  EXPECT_THAT(failed.error, AllOf(HasSubstr("/line\\u{0A}break\\u{200E}/"), Not(HasSubstr("line\n"))));
  EXPECT_THAT(companion({"so\nrt"}).error,
              StartsWith("quilleryctl: there is no command “so\\u{0A}rt” (did you mean “sort”?); see"));
}

// Previews, backups and restores

TEST_P(CompanionFormats, previewsWhatASortThenDoes) {
  makeFile(bookmarks_, demoFile(GetParam()));
  const Ending preview = companion({"preview"});
  EXPECT_EQ(preview.status, 0);
  EXPECT_THAT(preview.output, AllOf(HasSubstr("↑   ▸ Archive  (8 → 1)\n"),
                                    EndsWith("A sort would move 14 entries in 6 folders. Nothing was written.\n")));
  EXPECT_EQ(companion({"check"}).status, 1);
  EXPECT_EQ(contentOf(bookmarks_), demoFile(GetParam()));
  EXPECT_THAT(namesIn(scratch_.path("Library")), ElementsAre("Safari")) << "nothing is created";
  EXPECT_EQ(companion({"sort", "--quiet"}).output, "");
  EXPECT_EQ(companion({"preview"}).output, "Your Safari bookmarks are already in order.\n");
  EXPECT_EQ(companion({"check"}).status, 0);
}

TEST_P(CompanionFormats, restoresTheExactBytesAndUndoesThat) {
  const std::string before = demoFile(GetParam());
  makeFile(bookmarks_, before);
  chmod(bookmarks_.c_str(), 0640);
  companion({"sort"});
  const std::string after = contentOf(bookmarks_);
  const std::string first = std::filesystem::path(backup()).filename();
  const Ending restored = companion({"restore", first});
  EXPECT_EQ(restored.status, 0);
  EXPECT_THAT(restored.output, StartsWith("Bookmarks restored: "));
  EXPECT_EQ(contentOf(bookmarks_), before);
  EXPECT_EQ(modeOf(bookmarks_), 0640U);
  const std::string second = restored.output.substr(restored.output.find("Backup: ") + 8);
  EXPECT_EQ(companion({"restore", second.substr(0, second.size() - 1)}).status, 0) << "by its path";
  EXPECT_EQ(contentOf(bookmarks_), after);
  EXPECT_EQ(namesIn(backups_).size(), 3U) << "each restore backed up the bytes it replaced";
  for (const std::string& name : namesIn(backups_)) EXPECT_EQ(modeOf(backups_ + "/" + name), 0600U);
  EXPECT_THAT(namesIn(scratch_.path("Library/Safari")), ElementsAre("Bookmarks.plist"));
}

TEST_F(CompanionTest, knowsTheUsersOwnFileThroughALink) {
  makeFile(bookmarks_, demoFile("xml"));
  const std::string link = scratch_.path("link.plist");
  std::filesystem::create_symlink(bookmarks_, link);
  EXPECT_EQ(companion({"sort", link}).status, 0);
  EXPECT_EQ(contentOf(backup()), demoFile("xml")) << "it is a backup of the user's own file";
  EXPECT_EQ(companion({"restore", std::filesystem::path(backup()).filename()}).status, 0);
}

TEST_F(CompanionTest, keepsTheBackupsOfEachFileApart) {
  makeFile(bookmarks_, demoFile("xml"));
  const std::string other = scratch_.path("other.plist");
  makeFile(other, demoFile("binary"));
  companion({"sort", other});
  EXPECT_EQ(companion({"backups", "--quiet"}).output, "");
  const std::string name = companion({"backups", "--quiet", other}).output;
  ASSERT_THAT(name, EndsWith(".plist\n"));
  const std::string path =
      backups_ + "/Other Files" + std::filesystem::canonical(other).string() + "/" + name.substr(0, name.size() - 1);
  EXPECT_EQ(modeOf(path), 0600U);
  EXPECT_EQ(companion({"restore", path}).status, 1) << "over the user's own file";
  EXPECT_EQ(contentOf(bookmarks_), demoFile("xml"));
  EXPECT_EQ(companion({"restore", path, other}).status, 0);
  EXPECT_EQ(contentOf(other), demoFile("binary"));
}

TEST_F(CompanionTest, listsTheNewestBackupFirst) {
  makeFile(bookmarks_, demoFile("xml"));
  companion({"sort"});
  const std::string first = std::filesystem::path(backup()).filename();
  companion({"restore", first});
  const Ending list = companion({"backups"});
  EXPECT_EQ(list.status, 0);
  const std::string time = "  [-0-9]+ [:0-9]+  ";
  EXPECT_THAT(list.output, MatchesRegex("NAME +TIME +SIZE  BOOKMARKS\n"
                                        "Bookmarks-[-0-9A-F]+\\.plist" +
                                        time + "13818 +22\n" + first + time +
                                        "13818 +22  current\n2 backups, 27636 bytes in total\n"));
  EXPECT_THAT(companion({"backups", "-q"}).output, EndsWith(".plist\n" + first + "\n"));
}

TEST_F(CompanionTest, listsBackupsOfLaterCenturies) {
  std::filesystem::create_directories(backups_);
  makeFile(backups_ + "/Bookmarks-A.plist", "");
  const std::array<timespec, 2> times{timespec{1, 0}, timespec{11'676'096'000, 0}};
  ASSERT_EQ(utimensat(AT_FDCWD, (backups_ + "/Bookmarks-A.plist").c_str(), times.data(), 0), 0);
  Environment utc = environment();
  utc["TZ"] = "UTC0";
  EXPECT_THAT(run(QUILLERYCTL_EXECUTABLE, {"backups"}, utc).output, HasSubstr("2340-01-02 00:00:00"));
}

TEST_F(CompanionTest, doesNotWaitForAPipeInPlaceOfATimeZone) {
  std::filesystem::create_directories(backups_);
  makeFile(backups_ + "/Bookmarks-A.plist", "");
  ASSERT_EQ(mkfifo(scratch_.path("zone").c_str(), 0600), 0);
  Environment odd = environment();
  odd["TZ"] = scratch_.path("zone");
  EXPECT_EQ(run(QUILLERYCTL_EXECUTABLE, {"backups"}, odd).status, 0);
}

TEST_F(CompanionTest, writesAMissingFileForItsOwnerOnly) {
  makeFile(bookmarks_, demoFile("xml"));
  companion({"sort"});
  const std::string content = contentOf(bookmarks_);
  companion({"restore", backup()});
  std::filesystem::remove(bookmarks_);
  makeFile(scratch_.path("kept.plist"), content);
  EXPECT_EQ(companion({"restore", "--foreign", scratch_.path("kept.plist"), bookmarks_}).status, 0);
  EXPECT_EQ(contentOf(bookmarks_), content);
  EXPECT_EQ(modeOf(bookmarks_), 0600U);
}

TEST_F(CompanionTest, doesNotReplaceADanglingLink) {
  makeFile(scratch_.path("kept.plist"), demoFile("xml"));
  std::filesystem::create_symlink(scratch_.path("elsewhere.plist"), bookmarks_);
  const Ending ending = companion({"restore", "--foreign", scratch_.path("kept.plist"), bookmarks_});
  EXPECT_EQ(ending.status, 1);
  EXPECT_THAT(ending.error, HasSubstr("File exists"));
  EXPECT_FALSE(std::filesystem::exists(scratch_.path("elsewhere.plist")));
}

TEST_F(CompanionTest, restoresNoFileThatIsNoBookmarkFile) {
  makeFile(bookmarks_, demoFile("binary"));
  makeFile(scratch_.path("notes.plist"), "not a property list <");
  std::filesystem::create_directory(scratch_.path("folder"));
  for (const std::string& name : {scratch_.path("notes.plist"), scratch_.path("folder"), scratch_.path("missing"),
                                  std::string("Bookmarks-A.plist"), std::string("..")}) {
    const Ending ending = companion({"restore", "--foreign", name, bookmarks_});
    EXPECT_EQ(ending.status, 1) << name;
    EXPECT_EQ(ending.output, "");
    EXPECT_THAT(ending.error, HasSubstr("quilleryctl: "));
  }
  EXPECT_EQ(contentOf(bookmarks_), demoFile("binary"));
  EXPECT_FALSE(std::filesystem::exists(backups_));
}

TEST_F(CompanionTest, resolvesPathsAgainstTheWorkingFolder) {
  makeFile(scratch_.path("Other.plist"), demoFile("xml"));
  const std::filesystem::path before = std::filesystem::current_path();
  std::filesystem::current_path(scratch_.path());
  EXPECT_EQ(companion({"sort", "-q", "Other.plist"}).status, 0);
  EXPECT_NE(contentOf("Other.plist"), demoFile("xml"));
  const std::string name = companion({"backups", "-q", "./Other.plist"}).output;
  EXPECT_EQ(companion({"restore", "-q", name.substr(0, name.find('\n')), "./Other.plist"}).status, 0);
  EXPECT_EQ(contentOf("Other.plist"), demoFile("xml"));
  std::filesystem::current_path(before);
}

TEST_F(CompanionTest, onlyReadsWhileSafariRuns) {
  makeFile(bookmarks_, demoFile("binary"));
  const OwnBus bus;
  const NameOwner owner("com.apple.Safari");
  makeFile(scratch_.path("kept.plist"), demoFile("xml"));
  EXPECT_EQ(companion({"restore", "--foreign", scratch_.path("kept.plist"), bookmarks_}, bus.address()).status, 75);
  EXPECT_EQ(companion({"sort", scratch_.path("kept.plist")}, bus.address()).status, 75);
  EXPECT_EQ(companion({"preview"}, bus.address()).status, 0);
  EXPECT_EQ(companion({"check"}, bus.address()).status, 1);
  EXPECT_EQ(contentOf(bookmarks_), demoFile("binary"));
}

TEST_F(CompanionTest, printsTheNextSortByTheStoredSettings) {
  EXPECT_EQ(companion({"next"}).output, "No sort is scheduled.\n");
  std::filesystem::create_directory(scratch_.path("config"));
  makeFile(scratch_.path("config/" + std::string(product::bundleIdentifier) + ".plist"),
           "<plist><dict><key>dailyEnabled</key><true/><key>dailyHour</key><integer>9</integer>"
           "<key>scheduleDays</key><array><integer>4</integer></array></dict></plist>");
  const EnvironmentScope settings("XDG_CONFIG_HOME", scratch_.path("config"));
  EXPECT_THAT(companion({"next"}).output, MatchesRegex("Wednesday [0-9]{4}-[0-9]{2}-[0-9]{2} 09:00\n"));
}

TEST_F(CompanionTest, ordersByTheRememberedLocaleIfNoneIsSet) {
  const auto file = [](const std::u16string& first, const std::u16string& second) {
    return fileOf(rootNode({folderNode(u"Bar", {leafNode(first), leafNode(second)})}));
  };
  makeFile(bookmarks_, file(u"z", u"å"));
  Environment cron = environment();
  cron["LANG"] = std::nullopt;
  cron["XDG_CONFIG_HOME"] = scratch_.path("config");
  EXPECT_EQ(run(QUILLERYCTL_EXECUTABLE, {"check"}, cron).status, 1) << "å is before z in most languages";
  std::filesystem::create_directory(scratch_.path("config"));
  makeFile(scratch_.path("config/" + std::string(product::bundleIdentifier) + ".plist"),
           "<plist><dict><key>sessionLocale</key><string>sv_SE</string></dict></plist>");
  EXPECT_EQ(run(QUILLERYCTL_EXECUTABLE, {"check"}, cron).status, 0) << "å is after z in Swedish";
  cron["LANG"] = "de_DE.UTF-8";
  EXPECT_EQ(run(QUILLERYCTL_EXECUTABLE, {"check"}, cron).status, 1);
}

TEST_F(CompanionTest, printsOneLineIfUsedWrongly) {
  makeFile(bookmarks_, demoFile("binary"));
  const std::vector<std::vector<std::string>> wrong = {
      {}, {"Sort"}, {"sorted"}, {"undo", "a", "b"}, {"sort", "--json"}, {"--sort"}, {""}, {"--versions"}, {"restore"}};
  for (const auto& arguments : wrong) {
    const Ending ending = companion(arguments);
    EXPECT_EQ(ending.status, 2);
    EXPECT_EQ(ending.output, "");
    EXPECT_THAT(ending.error, MatchesRegex("quilleryctl: [^\n]*; see quilleryctl --help\n"));
  }
  EXPECT_EQ(contentOf(bookmarks_), demoFile("binary"));
}

TEST_F(CompanionTest, printsItsHelpAndVersion) {
  const Ending help = companion({"--help"});
  EXPECT_EQ(help.status, 0);
  EXPECT_THAT(help.output, AllOf(StartsWith("usage: quilleryctl preview "), HasSubstr("75")));
  EXPECT_EQ(help.error, "");
  const Ending version = companion({"--version"});
  EXPECT_EQ(version.status, 0);
  EXPECT_EQ(version.output, "quilleryctl " + std::string(product::version) + "\n");
}

}  // namespace
