// The virtual machine itself: a test double that let a mistake pass would make every other test worthless.
#include "tests/support/virtual_machine.h"

#include <gmock/gmock.h>
#include <gtest/gtest-spi.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <iostream>
#include <memory>
#include <string>

#include "app/alert.h"

namespace {

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

TEST(VirtualMachine, isInstalledForAsLongAsItLives) {
  const VirtualMachine outer;
  {
    const VirtualMachine inner;
    EXPECT_EQ(&platform().fileSystem, &inner.files);
  }
  EXPECT_EQ(&platform().fileSystem, &outer.files);
}

TEST(VirtualMachine, notesWhatWasAskedInOrderAcrossAllInterfaces) {
  VirtualMachine machine;
  machine.files.put("/home/user/a", "1");
  platform().fileSystem.read("/home/user/a");
  platform().runningApplications.withBundleIdentifier("com.example.App");
  platform().fileSystem.createFolder("/home/user/b", 0700);
  EXPECT_THAT(machine.journal.entries(),
              ElementsAre("read /home/user/a", "running? com.example.App", "create folder /home/user/b 0700"));
}

TEST(VirtualMachine, doesWhatWasPreparedBeforeAndAfterTheOperationThatItWasPreparedFor) {
  VirtualMachine machine;
  machine.files.put("/home/user/a", "old");
  machine.journal.after("read", [&](const std::string& path) { machine.files.put(path, "new"); });
  machine.journal.before(
      "read", [&](const std::string& path) { machine.files.put(path, "newest"); }, 3);
  EXPECT_EQ(machine.files.read("/home/user/a").text(), "old");
  EXPECT_EQ(machine.files.read("/home/user/a").text(), "new");
  EXPECT_EQ(machine.files.read("/home/user/a").text(), "newest");
}

TEST(VirtualMachine, hasAutomaticOffFromItsStartToItsEnd) {
  automatic = true;
  {
    const VirtualMachine machine;
    EXPECT_FALSE(automatic);
    automatic = true;
  }
  EXPECT_FALSE(automatic);
}

TEST(VirtualUserInterface, failsTheTestOnAnAlertThatNobodyExpected) {
  VirtualMachine machine;
  std::size_t button = 0;
  EXPECT_NONFATAL_FAILURE(button = machine.userInterface.runModal({"Title", "Text", {"Retry", "Cancel"}}),
                          "an alert that nobody expected: Title: Text");
  EXPECT_EQ(button, 1U);
}

TEST(VirtualUserInterface, failsTheTestOnAnAnswerThatNothingAskedFor) {
  auto machine = std::make_unique<VirtualMachine>();
  machine->userInterface.willAnswer(0);
  EXPECT_NONFATAL_FAILURE(machine.reset(), "1 prepared answers to alerts that never came");
}

TEST(PrintedOutput, isNotedOnceItIsFlushed) {
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

TEST(VirtualFileSystem, failsAsPreparedInTheWordsOfASystemAndChangesNothing) {
  VirtualMachine machine;
  machine.files.put("/home/user/a", "old", 0640);
  const auto before = machine.files.files();
  machine.files.failOn("write atomically", ENOSPC, 2);
  machine.files.writeAtomically("/home/user/a", bytes("old"));
  EXPECT_EQ(problemOf([&] { machine.files.writeAtomically("/home/user/a", bytes("new")); }),
            "POSIX 28: The file “a” couldn’t be saved because the system answered “No space left on device” "
            "(/home/user/a).");
  machine.files.failOn("set mode", EPERM);
  EXPECT_THAT(problemOf([&] { machine.files.setMode("/home/user/a", 0600); }), HasSubstr("(/home/user/a)."));
  machine.files.failOn("create folder", EACCES);
  EXPECT_THAT(problemOf([&] { machine.files.createFolder("/home/user/b", 0700); }),
              HasSubstr("The folder “b” couldn’t be created because the system answered “Permission denied” "
                        "(/home/user/b)."));
  EXPECT_EQ(machine.files.files(), before);
  EXPECT_FALSE(machine.files.folders().contains("/home/user/b"));
}

TEST(VirtualFileSystem, failsOfItselfWhereARealOneWould) {
  VirtualMachine machine;
  machine.files.put("/home/user/a", "old");
  EXPECT_THAT(problemOf([&] { machine.files.read("/home/user/none"); }), HasSubstr("No such file or directory"));
  EXPECT_THAT(problemOf([&] { machine.files.read("/home/user"); }), HasSubstr("Is a directory"));
  EXPECT_THAT(problemOf([&] { machine.files.holds("/home/user/none", {}); }), HasSubstr("No such file or directory"));
  EXPECT_THAT(problemOf([&] { machine.files.writeNew("/home/user/a", {}); }), HasSubstr("File exists"));
  EXPECT_THAT(problemOf([&] { machine.files.writeNew("/none/a", {}); }), HasSubstr("No such file or directory"));
  EXPECT_THAT(problemOf([&] { machine.files.createFolder("/home/user/a/b", 0700); }), HasSubstr("Not a directory"));
  EXPECT_THAT(problemOf([&] { machine.files.setMode("/none", 0600); }), HasSubstr("No such file or directory"));
  EXPECT_EQ(machine.files.content("/home/user/a"), "old");
}

TEST(VirtualFileSystem, givesModesToWhatItCreatesAndLeavesThoseThatThereWere) {
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

TEST(VirtualProcesses, givesAnotherUuidEachTime) {
  VirtualMachine machine;
  const std::string first = machine.processes.randomUuid();
  EXPECT_EQ(first, VirtualProcesses::uuid(1));
  EXPECT_EQ(first.size(), 36U);
  EXPECT_NE(machine.processes.randomUuid(), first);
}

}  // namespace
