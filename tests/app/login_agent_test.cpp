// The login agent: its file, the launchctl commands and their repetitions, and what each failure leaves behind.
#include "app/login_agent.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <chrono>
#include <string>

#include "tests/support/virtual_machine.h"

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::StartsWith;

const std::string agents = "/home/user/Library/LaunchAgents";
const std::string logs = "/home/user/Library/Logs/Fenwarde";
const std::string file = agents + "/com.fenwarde.quillery.plist";
const std::string print = "run /bin/launchctl print gui/501/com.fenwarde.quillery";
const std::string bootout = "run /bin/launchctl bootout gui/501/com.fenwarde.quillery";
const std::string bootstrap = "run /bin/launchctl bootstrap gui/501 " + file;

class LoginAgent : public testing::Test {
 protected:
  // Registers the agent and returns the journal without the creation of the two folders, which always comes first.
  Entries registered() {
    machine_.journal.clear();
    registerBackgroundJob();
    Entries all = machine_.journal.entries();
    EXPECT_EQ(Entries(all.begin(), all.begin() + 2),
              (Entries{"create folder " + agents + " default", "create folder " + logs + " default"}));
    return {all.begin() + 2, all.end()};
  }
  // Registers the agent and returns the error as "domain code: description".
  std::string problem() {
    machine_.journal.clear();
    try {
      registerBackgroundJob();
    } catch (const Error& error) {
      return error.domain() + " " + std::to_string(error.code()) + ": " + error.description();
    }
    return "none";
  }
  void failToRun(const std::string& subcommand, int occurrence) {
    machine_.journal.before(
        "run",
        [subcommand](const std::string& line) {
          EXPECT_THAT(line, HasSubstr(subcommand));
          throw Error("POSIX", ENOENT, "launchctl is not there.");
        },
        occurrence);
  }
  PlistValue stored() const { return NativePropertyLists().parse(Bytes(machine_.files.content(file))).value; }
  void put(const PlistValue& value, PropertyListFormat format) {
    machine_.files.put(file, std::string(NativePropertyLists().serialize(value, format).text()));
  }

  VirtualMachine machine_;
};

TEST_F(LoginAgent, isWrittenAndLoadedOnAFirstRun) {
  EXPECT_THAT(registered(),
              ElementsAre("read " + file, bootout, print, "serialize xml", "write atomically " + file, bootstrap));
  EXPECT_TRUE(machine_.files.folders().contains(agents));
  EXPECT_TRUE(machine_.files.folders().contains(logs));
}

TEST_F(LoginAgent, isAnXmlPropertyListWithSixKeys) {
  registerBackgroundJob();
  EXPECT_THAT(machine_.files.content(file), StartsWith("<?xml"));
  const std::string executable = "/Applications/Quillery.app/Contents/MacOS/quillery";
  EXPECT_EQ(stored(), PlistValue::dictionary({
                          {u"Label", u"com.fenwarde.quillery"},
                          {u"AssociatedBundleIdentifiers", PlistValue::array({u"com.fenwarde.quillery"})},
                          {u"ProgramArguments", PlistValue::array({utf16(executable), u"--login"})},
                          {u"RunAtLoad", true},
                          {u"StandardOutPath", utf16(logs + "/quillery.log")},
                          {u"StandardErrorPath", utf16(logs + "/quillery-errors.log")},
                      }));
}

TEST_F(LoginAgent, isLeftAloneIfStoredAndLoaded) {
  registerBackgroundJob();
  const auto before = machine_.files.files();
  EXPECT_THAT(registered(), ElementsAre("read " + file, "parse", print));
  EXPECT_EQ(machine_.files.files(), before);
}

TEST_F(LoginAgent, isRewrittenAndLoadedIfNotLoaded) {
  registerBackgroundJob();
  machine_.processes.willAnswer("print", 113);
  EXPECT_THAT(registered(), ElementsAre("read " + file, "parse", print, bootout, print, "serialize xml",
                                        "write atomically " + file, bootstrap));
}

TEST_F(LoginAgent, isRewrittenAndLoadedIfTheProgramMoved) {
  registerBackgroundJob();
  machine_.bundle.moveTo("/Users/user/Applications/Quillery.app");
  EXPECT_THAT(registered(), ElementsAre("read " + file, "parse", bootout, print, "serialize xml",
                                        "write atomically " + file, bootstrap));
  EXPECT_THAT(machine_.files.content(file), HasSubstr("/Users/user/Applications/Quillery.app/Contents/MacOS/quillery"));
}

TEST_F(LoginAgent, isLeftAloneInBinaryFormat) {
  registerBackgroundJob();
  put(stored(), PropertyListFormat::binary);
  EXPECT_THAT(registered(), ElementsAre("read " + file, "parse", print));
}

TEST_F(LoginAgent, isLeftAloneWithKeysInAnotherOrder) {
  registerBackgroundJob();
  const PlistValue agent = stored();
  std::vector<PlistEntry> entries;
  for (std::size_t index = agent.size(); index-- > 0;)
    entries.push_back({agent.keyAt(index).utf16(), agent.valueAt(index)});
  put(PlistValue::dictionary(std::move(entries)), PropertyListFormat::xml);
  EXPECT_THAT(registered(), ElementsAre("read " + file, "parse", print));
}

TEST_F(LoginAgent, isReplacedIfItHasAnotherKey) {
  registerBackgroundJob();
  const PlistValue agent = stored();
  std::vector<PlistEntry> entries = {{u"KeepAlive", true}};
  for (std::size_t index = 0; index < agent.size(); ++index)
    entries.push_back({agent.keyAt(index).utf16(), agent.valueAt(index)});
  put(PlistValue::dictionary(std::move(entries)), PropertyListFormat::xml);
  registered();
  EXPECT_EQ(stored(), agent);
}

TEST_F(LoginAgent, isReplacedSilentlyIfDamaged) {
  machine_.files.put(file, "no property list <");
  registered();
  EXPECT_EQ(stored().size(), 6U);
}

TEST_F(LoginAgent, isReplacedSilentlyIfNotADictionary) {
  put(PlistValue::array({1, 2}), PropertyListFormat::xml);
  registered();
  EXPECT_EQ(stored().size(), 6U);
}

TEST_F(LoginAgent, isReplacedSilentlyIfUnreadable) {
  registerBackgroundJob();
  machine_.files.failOn("read", EACCES, 2);
  EXPECT_THAT(registered(),
              ElementsAre("read " + file, bootout, print, "serialize xml", "write atomically " + file, bootstrap));
}

// --- launchd unloads a job slowly ---

TEST_F(LoginAgent, isLoadedOnlyOnceTheOldJobIsGone) {
  machine_.processes.willAnswerNext("print", 0, 2);
  EXPECT_THAT(registered(), ElementsAre("read " + file, bootout, print, "pause 100 ms", print, "pause 100 ms", print,
                                        "serialize xml", "write atomically " + file, bootstrap));
}

TEST_F(LoginAgent, isLoadedAfter5SecondsIfTheOldJobStays) {
  machine_.processes.willAnswer("print", 0);
  const Instant start = machine_.loop.now();
  registerBackgroundJob();
  EXPECT_EQ(machine_.loop.now() - start, std::chrono::seconds(5));
  EXPECT_EQ(machine_.journal.entries().back(), bootstrap);
}

TEST_F(LoginAgent, isLoadedAtTheThirdAttempt) {
  machine_.processes.willAnswerNext("bootstrap", 5, 2);
  const Entries all = registered();
  EXPECT_EQ(Entries(all.end() - 5, all.end()),
            (Entries{bootstrap, "pause 2000 ms", bootstrap, "pause 2000 ms", bootstrap}));
}

// --- This process is the job ---

TEST_F(LoginAgent, isOnlyWrittenIfLaunchdStartedThisProcessAsItsJob) {
  machine_.processes.setVariable("XPC_SERVICE_NAME", "com.fenwarde.quillery");
  registerBackgroundJob();
  machine_.bundle.moveTo("/Users/user/Applications/Quillery.app");
  EXPECT_THAT(registered(), ElementsAre("read " + file, "parse", "serialize xml", "write atomically " + file))
      << "bootout would end this process";
}

TEST_F(LoginAgent, isLoadedIfLaunchdStartedThisProcessAsAnApplication) {
  machine_.processes.setVariable("XPC_SERVICE_NAME", "application.com.fenwarde.quillery.1234567.1234568");
  EXPECT_EQ(registered().back(), bootstrap);
}

// --- Switched off in the system's settings ---

TEST_F(LoginAgent, isNoErrorIfItsUserSwitchedItOff) {
  machine_.workspace.switchOff(file);
  machine_.processes.willAnswer("bootstrap", 5);
  EXPECT_EQ(registered().back(), bootstrap) << "once, and without a pause";
}

// --- Failures ---

TEST_F(LoginAgent, failsWithoutItsFolderAndRunsNothing) {
  machine_.files.failOn("create folder", EACCES);
  EXPECT_THAT(problem(), StartsWith("POSIX 13: "));
  EXPECT_THAT(machine_.journal.entries(), ElementsAre("create folder " + agents + " default"));
}

TEST_F(LoginAgent, failsWithoutTheLogFolderAndRunsNothing) {
  machine_.files.failOn("create folder", EACCES, 2);
  EXPECT_THAT(problem(), StartsWith("POSIX 13: "));
  EXPECT_EQ(machine_.journal.count("run"), 0);
  EXPECT_FALSE(machine_.files.files().contains(file));
}

TEST_F(LoginAgent, failsIfLaunchctlCannotBeStartedToPrint) {
  registerBackgroundJob();
  failToRun("print", 4);
  EXPECT_EQ(problem(), "POSIX 2: launchctl is not there.");
  EXPECT_EQ(machine_.journal.entries().back(), print) << "nothing runs after it";
}

TEST_F(LoginAgent, failsIfLaunchctlCannotBeStartedToBootOut) {
  failToRun("bootout", 1);
  EXPECT_EQ(problem(), "POSIX 2: launchctl is not there.");
  EXPECT_FALSE(machine_.files.files().contains(file));
}

TEST_F(LoginAgent, failsIfLaunchctlCannotBeStartedToBootstrap) {
  failToRun("bootstrap", 3);
  EXPECT_EQ(problem(), "POSIX 2: launchctl is not there.");
  EXPECT_TRUE(machine_.files.files().contains(file));
}

TEST_F(LoginAgent, failsIfItsFileCannotBeSerialized) {
  machine_.journal.before("serialize", [](const std::string&) { throw Error("Plist", 1, "It cannot."); });
  EXPECT_EQ(problem(), "Plist 1: It cannot.");
  EXPECT_EQ(machine_.journal.entries().back(), "serialize xml") << "bootstrap is not run";
}

TEST_F(LoginAgent, failsIfItsFileCannotBeWritten) {
  machine_.files.failOn("write atomically", ENOSPC);
  EXPECT_THAT(problem(), StartsWith("POSIX 28: "));
  EXPECT_EQ(machine_.journal.entries().back(), "write atomically " + file) << "bootstrap is not run";
}

TEST_F(LoginAgent, failsIfLaunchctlCannotBeStartedWhileTheJobIsUnloaded) {
  failToRun("print", 2);
  EXPECT_EQ(problem(), "POSIX 2: launchctl is not there.");
  EXPECT_FALSE(machine_.files.files().contains(file));
}

TEST_F(LoginAgent, failsWithCode4IfBootstrapFailsThreeTimes) {
  machine_.processes.willAnswer("bootstrap", 5);
  EXPECT_EQ(problem(), "Sorter 4: Could not enable automatic sorting. Please reopen the installed app.");
  EXPECT_EQ(machine_.journal.count("run"), 2 + 3);
}

}  // namespace
