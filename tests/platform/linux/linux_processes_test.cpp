#include "platform/linux/linux_processes.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "platform/error.h"
#include "platform/linux/installed_bundle.h"
#include "tests/platform/linux/environment_scope.h"
#include "tests/platform/linux/scratch_folder.h"

namespace {

TEST(LinuxProcesses, uuidIsInCanonicalForm) {
  LinuxProcesses processes;
  for (int round = 0; round < 100; ++round)
    EXPECT_THAT(processes.randomUuid(),
                testing::MatchesRegex("[0-9A-F]{8}-[0-9A-F]{4}-4[0-9A-F]{3}-[89AB][0-9A-F]{3}-[0-9A-F]{12}"));
}

TEST(LinuxProcesses, uuidDiffersEachTimeInEveryDigit) {
  LinuxProcesses processes;
  std::set<std::string> seen;
  std::vector<std::set<char>> digits(36);
  for (int round = 0; round < 1000; ++round) {
    const std::string uuid = processes.randomUuid();
    seen.insert(uuid);
    for (std::size_t place = 0; place < digits.size(); ++place) digits[place].insert(uuid.at(place));
  }
  EXPECT_EQ(seen.size(), 1000U);
  for (std::size_t place = 0; place < digits.size(); ++place) {
    const bool fixed = place == 8 || place == 13 || place == 18 || place == 23 || place == 14;
    EXPECT_EQ(digits[place].size(), fixed ? 1U : place == 19 ? 4U : 16U) << "place " << place;
  }
}

// Creates an executable shell script. Returns its path.
std::string makeScript(const std::string& path, const std::string& commands) {
  makeFile(path, "#!/bin/sh\n" + commands + "\n");
  std::filesystem::permissions(path, std::filesystem::perms::owner_all);
  return path;
}

TEST(LinuxProcesses, identifiersAreThoseOfThisProcess) {
  LinuxProcesses processes;
  EXPECT_EQ(processes.processIdentifier(), getpid());
  EXPECT_EQ(processes.userIdentifier(), getuid());
}

TEST(LinuxProcesses, distinguishesATerminalFromAFile) {
  const int terminal = posix_openpt(O_RDWR | O_NOCTTY);
  if (terminal < 0) GTEST_SKIP() << "no pseudo-terminal can be opened: " << std::strerror(errno);
  LinuxProcesses processes;
  const int standardOutput = dup(STDOUT_FILENO);
  const auto writesToTerminal = [&](int descriptor) {
    dup2(descriptor, STDOUT_FILENO);
    return processes.writesToTerminal();
  };
  const int file = open("/dev/null", O_WRONLY);
  const bool forFile = writesToTerminal(file);
  const bool forTerminal = writesToTerminal(terminal);
  dup2(standardOutput, STDOUT_FILENO);
  for (const int descriptor : {standardOutput, file, terminal}) close(descriptor);
  EXPECT_FALSE(forFile);
  EXPECT_TRUE(forTerminal);
}

TEST(LinuxProcesses, readsVariablesOfTheEnvironment) {
  LinuxProcesses processes;
  const EnvironmentScope set("QUILLERY_TEST_VARIABLE", "a b");
  EXPECT_EQ(processes.environmentVariable("QUILLERY_TEST_VARIABLE"), "a b");
  const EnvironmentScope empty("QUILLERY_TEST_VARIABLE", "");
  EXPECT_EQ(processes.environmentVariable("QUILLERY_TEST_VARIABLE"), "");
  const EnvironmentScope unset("QUILLERY_TEST_VARIABLE", std::nullopt);
  EXPECT_EQ(processes.environmentVariable("QUILLERY_TEST_VARIABLE"), std::nullopt);
}

TEST(LinuxProcesses, knowsItsWorkingFolderUnlessItIsRemoved) {
  LinuxProcesses processes;
  const std::string before = processes.workingFolder();
  EXPECT_EQ(before, std::filesystem::current_path().string());
  std::string complaint;
  {
    const ScratchFolder scratch;
    std::filesystem::create_directory(scratch.path("gone"));
    std::filesystem::current_path(scratch.path("gone"));
    std::filesystem::remove(scratch.path("gone"));
    try {
      processes.workingFolder();
    } catch (const Error& error) {
      complaint = error.description();
    }
    std::filesystem::current_path(before);
  }
  EXPECT_EQ(complaint, "The working folder couldn’t be found: No such file or directory.");
}

TEST(LinuxProcesses, runReturnsTheExitStatus) {
  LinuxProcesses processes;
  EXPECT_EQ(processes.run("/bin/true", {}), 0);
  EXPECT_EQ(processes.run("/bin/false", {}), 1);
  EXPECT_EQ(processes.run("/bin/sh", {"-c", "exit 113"}), 113);
}

TEST(LinuxProcesses, runReturnsTheSignalThatEndedTheProgram) {
  LinuxProcesses processes;
  EXPECT_EQ(processes.run("/bin/sh", {"-c", "kill -KILL $$"}), SIGKILL);
  EXPECT_EQ(processes.run("/bin/sh", {"-c", "kill -TERM $$"}), SIGTERM);
}

TEST(LinuxProcesses, runPassesArgumentsUnchangedAndWaits) {
  const ScratchFolder scratch;
  const std::string script = makeScript(scratch.path("note"), "printf '%s|' \"$@\" > \"$0.txt\"");
  EXPECT_EQ(LinuxProcesses().run(script, {"two words", "$HOME; exit 3", "", "*"}), 0);
  EXPECT_EQ(contentOf(scratch.path("note.txt")), "two words|$HOME; exit 3||*|");
}

TEST(LinuxProcesses, runConnectsTheStreamsToDevNull) {
  const ScratchFolder scratch;
  const std::string script = makeScript(scratch.path("streams"),
                                        "out=$(readlink /proc/$$/fd/1); in=$(readlink /proc/$$/fd/0); "
                                        "error=$(readlink /proc/$$/fd/2); echo \"$in $out $error\" > \"$0.txt\"");
  EXPECT_EQ(LinuxProcesses().run(script, {}), 0);
  EXPECT_EQ(contentOf(scratch.path("streams.txt")), "/dev/null /dev/null /dev/null\n");
}

TEST(LinuxProcesses, runResetsTheSignalsOfTheProgram) {
  const auto before = std::signal(SIGTERM, SIG_IGN);
  sigset_t blocked;
  sigset_t old;
  sigemptyset(&blocked);
  sigaddset(&blocked, SIGTERM);
  pthread_sigmask(SIG_BLOCK, &blocked, &old);
  EXPECT_EQ(LinuxProcesses().run("/bin/sh", {"-c", "kill -TERM $$"}), SIGTERM);
  pthread_sigmask(SIG_SETMASK, &old, nullptr);
  static_cast<void>(std::signal(SIGTERM, before));
}

TEST(LinuxProcesses, runReportsWhyAProgramCannotBeStarted) {
  const ScratchFolder scratch;
  makeFile(scratch.path("plain"), "no program");
  const std::vector<std::pair<std::string, std::string>> cases = {
      {scratch.path("none"), "No such file or directory"},
      {scratch.path("plain"), "Permission denied"},
      {scratch.path(), "Permission denied"},
      {"true", "No such file or directory"},  // PATH is not searched
  };
  for (const auto& [path, words] : cases) {
    try {
      LinuxProcesses().run(path, {});
      ADD_FAILURE() << path << " was started";
    } catch (const Error& error) {
      std::string wanted = "The program “";
      wanted.append(path).append("” couldn’t be run: ").append(words).append(".");
      EXPECT_EQ(error.description(), wanted);
    }
  }
}

TEST(LinuxProcesses, pauseTakesAtLeastTheGivenTime) {
  const auto start = std::chrono::steady_clock::now();
  LinuxProcesses().pause(std::chrono::milliseconds(2));
  EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(2));
}

TEST(LinuxProcesses, runReplacesLaunchctlByOurOwn) {
  const std::string standIn = helperProgram(runningExecutable(), "quillery-launchctl");
  if (std::filesystem::exists(standIn)) GTEST_SKIP() << standIn << " exists, and the test would replace it";
  makeScript(standIn, "[ \"$1 $2\" = \"print gui/501\" ] && exit 41");
  const int status = LinuxProcesses().run("/bin/launchctl", {"print", "gui/501"});
  std::filesystem::remove(standIn);
  EXPECT_EQ(status, 41);
  EXPECT_THROW(LinuxProcesses().run("/bin/launchctl", {}), Error)
      << "it no longer exists, and no other program takes its place";
}

}  // namespace
