// The virtual machine itself, because all other tests rely on it.
#include "tests/support/virtual_machine.h"

#include <gmock/gmock.h>
#include <gtest/gtest-spi.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <chrono>
#include <iostream>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "app/alert.h"

namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

std::string problemOf(const std::function<void()>& operation) {
  try {
    operation();
  } catch (const Error& error) {
    return error.domain() + " " + std::to_string(error.code()) + ": " + error.description();
  }
  return "none";
}

Bytes bytes(const char* text) { return Bytes(std::string(text)); }

TEST(VirtualMachine, isInstalledWhileItLives) {
  const VirtualMachine outer;
  {
    const VirtualMachine inner;
    EXPECT_EQ(&platform().fileSystem, &inner.files);
  }
  EXPECT_EQ(&platform().fileSystem, &outer.files);
}

TEST(VirtualMachine, recordsCallsInOrderAcrossAllInterfaces) {
  VirtualMachine machine;
  machine.files.put("/home/user/a", "1");
  platform().fileSystem.read("/home/user/a");
  platform().runningApplications.withBundleIdentifier("com.example.App");
  platform().fileSystem.createFolder("/home/user/b", 0700);
  EXPECT_THAT(machine.journal.entries(),
              ElementsAre("read /home/user/a", "running? com.example.App", "create folder /home/user/b 0700"));
}

TEST(VirtualMachine, runsActionsBeforeAndAfterTheirOperation) {
  VirtualMachine machine;
  machine.files.put("/home/user/a", "old");
  machine.journal.after("read", [&](const std::string& path) { machine.files.put(path, "new"); });
  machine.journal.before(
      "read", [&](const std::string& path) { machine.files.put(path, "newest"); }, 3);
  EXPECT_EQ(machine.files.read("/home/user/a").text(), "old");
  EXPECT_EQ(machine.files.read("/home/user/a").text(), "new");
  EXPECT_EQ(machine.files.read("/home/user/a").text(), "newest");
}

TEST(VirtualMachine, clearsAutomaticAtItsStartAndEnd) {
  automatic = true;
  {
    const VirtualMachine machine;
    EXPECT_FALSE(automatic);
    automatic = true;
  }
  EXPECT_FALSE(automatic);
}

TEST(VirtualUserInterface, failsTheTestOnAnUnexpectedAlert) {
  VirtualMachine machine;
  std::size_t button = 0;
  EXPECT_NONFATAL_FAILURE(button = machine.userInterface.runModal({"Title", "Text", {"Retry", "Cancel"}}),
                          "an unexpected alert: Title: Text");
  EXPECT_EQ(button, 1U);
}

TEST(VirtualUserInterface, failsTheTestOnAnUnusedAnswer) {
  auto machine = std::make_unique<VirtualMachine>();
  machine->userInterface.willAnswer(0);
  EXPECT_NONFATAL_FAILURE(machine.reset(), "1 prepared answers to alerts that were never shown");
}

TEST(PrintedOutput, isRecordedOnceItIsFlushed) {
  VirtualMachine machine;
  std::cout << "one " << 2 << '\n';
  EXPECT_THAT(machine.journal.entries(), IsEmpty());
  std::cout.flush();
  EXPECT_THAT(machine.journal.entries(), ElementsAre("printed one 2\n"));
}

TEST(PrintedOutput, failsTheTestIfItIsNeverFlushed) {
  auto machine = std::make_unique<VirtualMachine>();
  std::cout << "lost";
  EXPECT_NONFATAL_FAILURE(machine.reset(), "printed and not flushed");
}

TEST(VirtualFileSystem, failsAsPreparedAndChangesNothing) {
  VirtualMachine machine;
  machine.files.put("/home/user/a", "old", 0640);
  const auto before = machine.files.files();
  machine.files.failOn("write atomically", ENOSPC, 2);
  machine.files.writeAtomically("/home/user/a", bytes("old"));
  EXPECT_EQ(problemOf([&] { machine.files.writeAtomically("/home/user/a", bytes("new")); }),
            "POSIX 28: The file “a” couldn’t be saved: No space left on device "
            "(/home/user/a).");
  machine.files.failOn("set mode", EPERM);
  EXPECT_THAT(problemOf([&] { machine.files.setMode("/home/user/a", 0600); }), HasSubstr("(/home/user/a)."));
  machine.files.failOn("create folder", EACCES);
  EXPECT_THAT(problemOf([&] { machine.files.createFolder("/home/user/b", 0700); }),
              HasSubstr("The folder “b” couldn’t be created: Permission denied "
                        "(/home/user/b)."));
  EXPECT_EQ(machine.files.files(), before);
  EXPECT_FALSE(machine.files.folders().contains("/home/user/b"));
}

TEST(VirtualFileSystem, failsWhereARealFileSystemFails) {
  VirtualMachine machine;
  machine.files.put("/home/user/a", "old");
  EXPECT_THAT(problemOf([&] { machine.files.read("/home/user/none"); }), HasSubstr("No such file or directory"));
  EXPECT_THAT(problemOf([&] { machine.files.read("/home/user"); }), HasSubstr("Is a directory"));
  EXPECT_THAT(problemOf([&] { machine.files.replaceIfHolds("/home/user/none", {}, {}, [] { return true; }); }),
              HasSubstr("No such file or directory"));
  EXPECT_THAT(problemOf([&] { machine.files.writeNew("/home/user/a", {}); }), HasSubstr("File exists"));
  EXPECT_THAT(problemOf([&] { machine.files.writeNew("/none/a", {}); }), HasSubstr("No such file or directory"));
  EXPECT_THAT(problemOf([&] { machine.files.createFolder("/home/user/a/b", 0700); }), HasSubstr("Not a directory"));
  EXPECT_THAT(problemOf([&] { machine.files.setMode("/none", 0600); }), HasSubstr("No such file or directory"));
  EXPECT_EQ(machine.files.content("/home/user/a"), "old");
}

TEST(VirtualFileSystem, setsModesOnlyOnWhatItCreates) {
  VirtualMachine machine;
  machine.files.put("/home/user/Library/a", "1", 0640);
  machine.files.createFolder("/home/user/Library/b/c", 0710);
  machine.files.writeAtomically("/home/user/Library/a", bytes("2"));
  EXPECT_EQ(machine.files.mode("/home/user/Library"), 0700U);
  EXPECT_EQ(machine.files.mode("/home/user/Library/b"), 0710U);
  EXPECT_EQ(machine.files.mode("/home/user/Library/b/c"), 0710U);
  EXPECT_EQ(machine.files.mode("/home/user/Library/a"), 0640U);
  machine.files.setMode("/home/user/Library/a", 0600);
  EXPECT_EQ(machine.files.mode("/home/user/Library/a"), 0600U);
}

TEST(VirtualRunningApplications, listsEachProcessByIdentifier) {
  VirtualMachine machine;
  const int first = machine.applications.start("com.example.App");
  const int second = machine.applications.start("com.example.App");
  const auto running = machine.applications.withBundleIdentifier("com.example.App");
  ASSERT_EQ(running.size(), 2U);
  EXPECT_EQ(running[0]->processIdentifier(), first);
  EXPECT_EQ(running[1]->processIdentifier(), second);
  EXPECT_THAT(machine.applications.withBundleIdentifier("com.example"), IsEmpty());
  machine.applications.end("com.example.App");
  EXPECT_THAT(machine.applications.withBundleIdentifier("com.example.App"), IsEmpty());
}

TEST(VirtualRunningApplications, quitAsTheirBehaviorDescribes) {
  VirtualMachine machine;
  const int quick = machine.applications.start("App", {.quitsAfter = 1s});
  machine.applications.start("App", {.isRefused = true});
  machine.applications.start("App", {.quitsAfter = std::nullopt});
  machine.applications.start("App", {.quitsAfter = 2s, .restartsAfter = 1s});
  std::vector<bool> answers;
  for (const auto& application : machine.applications.withBundleIdentifier("App"))
    answers.push_back(application->terminate());
  EXPECT_THAT(answers, ElementsAre(true, false, true, true));
  EXPECT_EQ(machine.journal.entries().at(1), "quit " + std::to_string(quick));
  EXPECT_EQ(machine.applications.count("App"), 4);
  machine.loop.advance(1s);
  EXPECT_EQ(machine.applications.count("App"), 3);
  machine.loop.advance(1s);
  EXPECT_EQ(machine.applications.count("App"), 2);
  machine.loop.advance(1s);
  EXPECT_EQ(machine.applications.count("App"), 3) << "one restarted itself";
  machine.loop.advance(1h);
  EXPECT_EQ(machine.applications.count("App"), 3) << "the others keep running";
}

TEST(VirtualRunningApplications, refuseToQuitOnceTheyAreGone) {
  VirtualMachine machine;
  machine.applications.start("App");
  const auto running = machine.applications.withBundleIdentifier("App");
  machine.applications.end("App");
  EXPECT_FALSE(running[0]->terminate());
}

TEST(VirtualWorkspace, callsItsObserversThroughTheLoop) {
  VirtualMachine machine;
  std::vector<int> observed;
  auto observation =
      machine.workspace.observeTerminations([&](const auto& ended) { observed.push_back(ended->processIdentifier()); });
  const int first = machine.applications.start("App");
  machine.applications.start("App");
  machine.applications.endProcess(first);
  EXPECT_THAT(observed, IsEmpty());
  machine.loop.run();
  EXPECT_THAT(observed, ElementsAre(first));
  machine.applications.end("App");
  observation.reset();
  machine.loop.run();
  EXPECT_THAT(observed, ElementsAre(first));
}

TEST(VirtualWorkspace, startsWhatItOpensUnlessItRuns) {
  VirtualMachine machine;
  const auto location = machine.workspace.locateApplication("com.apple.Safari");
  ASSERT_TRUE(location);
  machine.workspace.openApplication(*location);
  EXPECT_EQ(machine.applications.count("com.apple.Safari"), 1);
  machine.workspace.openApplication(*location);
  EXPECT_EQ(machine.applications.count("com.apple.Safari"), 1);
  EXPECT_EQ(machine.workspace.locateApplication("com.example.None"), std::nullopt);
}

class VirtualTime : public testing::Test {
 protected:
  // Work that records `name`.
  Work notes(const std::string& name) {
    return [this, name] { seen_.push_back(name); };
  }
  TimerHandler timerNotes(const std::string& name) {
    return [this, name](Timer&) { seen_.push_back(name); };
  }

  VirtualMachine machine_;
  VirtualMainLoop& loop_ = machine_.loop;
  std::vector<std::string> seen_;
};

TEST_F(VirtualTime, passesOnlyWhenATestAdvancesIt) {
  const Instant start = loop_.now();
  loop_.after(0ms, notes("at once"));
  EXPECT_EQ(loop_.now(), start);
  EXPECT_THAT(seen_, IsEmpty());
  loop_.advance(90s);
  EXPECT_EQ(loop_.now(), start + 90s);
  EXPECT_THAT(seen_, ElementsAre("at once"));
}

TEST_F(VirtualTime, runsDueWorkInOrderAtItsTime) {
  const Instant start = loop_.now();
  loop_.after(2s, notes("second"));
  loop_.timerAt(start + 1s, [&](Timer&) {
    seen_.emplace_back("first");
    EXPECT_EQ(loop_.now(), start + 1s);
  });
  loop_.post(notes("posted"));
  loop_.post(notes("posted later"));
  loop_.advance(10s);
  EXPECT_THAT(seen_, ElementsAre("posted", "posted later", "first", "second"));
}

TEST_F(VirtualTime, repeatsATimerUntilItIsInvalidatedEvenByItself) {
  const auto timer = loop_.repeatingTimer(250ms, [&](Timer& self) {
    seen_.emplace_back("tick");
    if (seen_.size() == 3) self.invalidate();
  });
  loop_.advance(749ms);
  EXPECT_EQ(seen_.size(), 2U);
  loop_.advance(10s);
  EXPECT_EQ(seen_.size(), 3U);
  EXPECT_FALSE(timer->isValid());
  EXPECT_EQ(loop_.armedTimers(), 0);
}

TEST_F(VirtualTime, firesAOneShotTimerOnce) {
  loop_.timerAt(loop_.now() + 1s, [&](Timer& self) {
    seen_.emplace_back("fired");
    EXPECT_FALSE(self.isValid());
  });
  EXPECT_EQ(loop_.armedTimers(), 1);
  loop_.advance(1h);
  EXPECT_THAT(seen_, ElementsAre("fired"));
}

TEST_F(VirtualTime, firesOnceForSeveralMissedFirings) {
  loop_.repeatingTimer(1s, timerNotes("tick"));
  loop_.occupy(10s + 500ms);
  EXPECT_THAT(seen_, IsEmpty());
  loop_.run();
  EXPECT_EQ(seen_.size(), 1U);
  loop_.advance(500ms);
  EXPECT_EQ(seen_.size(), 2U);
}

TEST_F(VirtualTime, runsOnlyTheNextThingThatIsDue) {
  loop_.after(2s, notes("later"));
  loop_.after(1s, notes("first"));
  loop_.after(1s, notes("second"));
  EXPECT_FALSE(loop_.runNext(999ms));
  EXPECT_TRUE(loop_.runNext(1s));
  EXPECT_THAT(seen_, ElementsAre("first"));
  EXPECT_EQ(loop_.uptime(), 1s);
  EXPECT_TRUE(loop_.runNext(0s));
  EXPECT_THAT(seen_, ElementsAre("first", "second"));
}

TEST_F(VirtualTime, listsWhatWillRunInThatOrder) {
  const auto timer = loop_.repeatingTimer(250ms, timerNotes("tick"));
  loop_.timerAt(loop_.now() + 1s, timerNotes("unused"))->invalidate();
  loop_.elsewhere(100ms, notes("outside"), "outside");
  loop_.post(notes("posted"));
  loop_.pass(50ms);
  const auto pending = loop_.pending();
  ASSERT_EQ(pending.size(), 3U);
  EXPECT_EQ(pending[0].description, "post");
  EXPECT_EQ(pending[0].remaining, -50ms);
  EXPECT_EQ(pending[1].description, "outside");
  EXPECT_EQ(pending[2].timer, timer.get());
  EXPECT_EQ(pending[2].remaining, 200ms);
  EXPECT_FALSE(pending[2].isFiring);
}

TEST_F(VirtualTime, forgetsTheProgramButNotTheOutside) {
  loop_.repeatingTimer(1s, timerNotes("tick"));
  loop_.post(notes("posted"));
  loop_.elsewhere(1s, notes("outside"));
  loop_.dropProgram();
  loop_.advance(5s);
  EXPECT_THAT(seen_, ElementsAre("outside"));
}

TEST_F(VirtualTime, runsInANestedLoopButNotForTheFiringTimer) {
  loop_.repeatingTimer(1s, [&](Timer& self) {
    seen_.emplace_back("begins");
    loop_.advance(5s);
    seen_.emplace_back("ends");
    self.invalidate();
  });
  loop_.after(3s, notes("nested"));
  loop_.advance(1s);
  EXPECT_THAT(seen_, ElementsAre("begins", "nested", "ends"));
}

TEST_F(VirtualTime, runsOutsideEventsWhileTheThreadIsOccupied) {
  loop_.elsewhere(1s, notes("outside"));
  loop_.after(1s, notes("inside"));
  loop_.occupy(2s);
  EXPECT_THAT(seen_, ElementsAre("outside"));
}

TEST_F(VirtualTime, onlyMovesTheWallClockInSleep) {
  const Instant start = loop_.now();
  loop_.after(10s, notes("delayed"));
  loop_.timerAt(start + 10s, timerNotes("timer"));
  machine_.sleep(1h);
  EXPECT_EQ(loop_.now(), start + 1h);
  loop_.run();
  EXPECT_THAT(seen_, ElementsAre("timer"));
  loop_.advance(10s);
  EXPECT_THAT(seen_, ElementsAre("timer", "delayed"));
}

TEST_F(VirtualTime, deliversAWakeBeforeOrAfterOverdueWork) {
  const auto observation = machine_.workspace.observeWake(notes("woke"));
  for (const auto place : {VirtualMainLoop::Place::back, VirtualMainLoop::Place::front}) {
    loop_.timerAt(loop_.now() + 1s, timerNotes("timer"));
    machine_.sleep(1h, place);
    loop_.run();
  }
  EXPECT_THAT(seen_, ElementsAre("timer", "woke", "woke", "timer"));
}

TEST_F(VirtualTime, followsAClockThatIsSet) {
  loop_.timerAt(loop_.now() + 1h, timerNotes("timer"));
  loop_.setClock(loop_.now() + 59min);
  loop_.advance(59s);
  EXPECT_THAT(seen_, IsEmpty());
  loop_.advance(1s);
  EXPECT_THAT(seen_, ElementsAre("timer"));
}

TEST(VirtualTimeText, isReadAndWritten) {
  EXPECT_EQ(utcText(utc("2026-02-28 23:59:59") + 1s), "2026-03-01 00:00:00");
  EXPECT_THROW(utc("tomorrow"), std::invalid_argument);
}

TEST(VirtualUserDefaults, holdAnyTypeAndRecordWhatTheProgramStores) {
  VirtualMachine machine;
  machine.defaults.put("a", u"text");
  EXPECT_EQ(machine.defaults.object("a"), PlistValue(u"text"));
  EXPECT_EQ(machine.defaults.object("b"), std::nullopt);
  machine.defaults.set("b", numberList({1, 7}));
  machine.defaults.set("c", true);
  machine.defaults.set("d", 9);
  EXPECT_THAT(machine.journal.entries(), ElementsAre("set b [1, 7]", "set c true", "set d 9"));
}

TEST(VirtualProcesses, givesAnotherUuidEachTime) {
  VirtualMachine machine;
  const std::string first = machine.processes.randomUuid();
  EXPECT_EQ(first, VirtualProcesses::uuid(1));
  EXPECT_EQ(first.size(), 36U);
  EXPECT_NE(machine.processes.randomUuid(), first);
}

}  // namespace
