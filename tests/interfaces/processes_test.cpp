// Services for processes: what every implementation promises.
#include "platform/processes.h"

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
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "platform/error.h"
#include "tests/interfaces/differences.h"
#include "tests/interfaces/implementations.h"
#include "tests/support/environment_scope.h"
#include "tests/support/scratch_folder.h"

namespace {

class ProcessesTest : public InterfaceTest<Implementation<Processes>> {
 protected:
  const std::unique_ptr<Processes> processes_ = GetParam().make();
};

INSTANTIATE_TEST_SUITE_P(Implementations, ProcessesTest, testing::ValuesIn(processes()), implementationName);

TEST_P(ProcessesTest, makeUuidsInCanonicalForm) {
  constexpr const char* form = "XXXXXXXX-XXXX-4XXX-VXXX-XXXXXXXXXXXX";
  for (int round = 0; round < 100; ++round) {
    const std::string uuid = processes_->randomUuid();
    ASSERT_EQ(uuid.size(), std::strlen(form)) << uuid;
    for (std::size_t place = 0; place < uuid.size(); ++place) {
      const std::string digits = form[place] == 'X'   ? "0123456789ABCDEF"
                                 : form[place] == 'V' ? "89AB"
                                                      : std::string(1, form[place]);
      EXPECT_NE(digits.find(uuid[place]), digits.npos) << uuid << ", place " << place;
    }
  }
}

TEST_P(ProcessesTest, makeAnotherUuidEachTime) {
  std::set<std::string> seen;
  for (int round = 0; round < 1000; ++round) seen.insert(processes_->randomUuid());
  EXPECT_EQ(seen.size(), 1000U);
}

TEST_P(ProcessesTest, makeUuidsOfEveryDigitAtEveryPlace) {
  std::vector<std::set<char>> digits(36);
  for (int round = 0; round < 1000; ++round) {
    const std::string uuid = processes_->randomUuid();
    for (std::size_t place = 0; place < digits.size(); ++place) digits[place].insert(uuid.at(place));
  }
  for (std::size_t place = 0; place < digits.size(); ++place) {
    const bool fixed = place == 8 || place == 13 || place == 18 || place == 23 || place == 14;
    EXPECT_EQ(digits[place].size(), fixed ? 1U : place == 19 ? 4U : 16U) << "place " << place;
  }
}

TEST_P(ProcessesTest, identifyThisProcess) {
  EXPECT_EQ(processes_->processIdentifier(), getpid());
  EXPECT_EQ(processes_->userIdentifier(), getuid());
}

TEST_P(ProcessesTest, distinguishATerminalFromAFile) {
  const int terminal = posix_openpt(O_RDWR | O_NOCTTY);
  if (terminal < 0) GTEST_SKIP() << "no pseudo-terminal can be opened: " << std::strerror(errno);
  ASSERT_EQ(grantpt(terminal), 0);
  ASSERT_EQ(unlockpt(terminal), 0);
  const int end = open(ptsname(terminal), O_RDWR | O_NOCTTY);  // NOLINT(concurrency-mt-unsafe): one thread
  const int file = open("/dev/null", O_WRONLY);
  const int standardOutput = dup(STDOUT_FILENO);
  const auto writesToTerminal = [&](int descriptor) {
    dup2(descriptor, STDOUT_FILENO);
    return processes_->writesToTerminal();
  };
  const bool forFile = writesToTerminal(file);
  const bool forTerminal = writesToTerminal(end);
  dup2(standardOutput, STDOUT_FILENO);
  for (const int descriptor : {standardOutput, file, end, terminal}) close(descriptor);
  EXPECT_FALSE(forFile);
  EXPECT_TRUE(forTerminal);
}

TEST_P(ProcessesTest, readVariablesOfTheEnvironment) {
  const EnvironmentScope set("QUILLERY_TEST_VARIABLE", "a b");
  EXPECT_EQ(processes_->environmentVariable("QUILLERY_TEST_VARIABLE"), "a b");
  const EnvironmentScope empty("QUILLERY_TEST_VARIABLE", "");
  EXPECT_EQ(processes_->environmentVariable("QUILLERY_TEST_VARIABLE"), "");
  const EnvironmentScope unset("QUILLERY_TEST_VARIABLE", std::nullopt);
  EXPECT_EQ(processes_->environmentVariable("QUILLERY_TEST_VARIABLE"), std::nullopt);
}

TEST_P(ProcessesTest, knowTheWorkingFolder) {
  EXPECT_EQ(processes_->workingFolder(), std::filesystem::current_path().string());
}

TEST_P(ProcessesTest, returnTheExitStatusOfAProgram) {
  EXPECT_EQ(processes_->run("/bin/sh", {"-c", "exit 0"}), 0);
  EXPECT_EQ(processes_->run("/bin/sh", {"-c", "exit 1"}), 1);
  EXPECT_EQ(processes_->run("/bin/sh", {"-c", "exit 113"}), 113);
}

TEST_P(ProcessesTest, returnTheSignalThatEndedAProgram) {
  EXPECT_EQ(processes_->run("/bin/sh", {"-c", "kill -KILL $$"}), SIGKILL);
  EXPECT_EQ(processes_->run("/bin/sh", {"-c", "kill -TERM $$"}), SIGTERM);
}

TEST_P(ProcessesTest, passArgumentsUnchangedAndWait) {
  const ScratchFolder scratch;
  const std::string script = scratch.path("note");
  makeFile(script, "#!/bin/sh\nprintf '%s|' \"$@\" > \"$0.txt\"\n");
  std::filesystem::permissions(script, std::filesystem::perms::owner_all);
  EXPECT_EQ(processes_->run(script, {"two words", "$HOME; exit 3", "", "*"}), 0);
  ASSERT_TRUE(std::filesystem::exists(scratch.path("note.txt")));
  EXPECT_EQ(contentOf(scratch.path("note.txt")), "two words|$HOME; exit 3||*|");
}

TEST_P(ProcessesTest, giveAProgramNoInputAndDiscardItsOutput) {
  testing::internal::CaptureStdout();
  testing::internal::CaptureStderr();
  const int status = processes_->run("/bin/sh", {"-c", "echo out; echo error >&2; read line && exit 7; exit 8"});
  EXPECT_EQ(testing::internal::GetCapturedStdout() + testing::internal::GetCapturedStderr(), "");
  EXPECT_EQ(status, 8);
}

TEST_P(ProcessesTest, refuseToRunWhatIsNoProgram) {
  const ScratchFolder scratch;
  makeFile(scratch.path("plain"), "no program");
  for (const std::string& path : {scratch.path("none"), scratch.path("plain"), scratch.path()})
    EXPECT_THROW(processes_->run(path, {}), Error) << path;
}

TEST_P(ProcessesTest, pauseForAtLeastTheGivenTime) {
  const auto start = std::chrono::steady_clock::now();
  processes_->pause(std::chrono::milliseconds(2));
  EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(2));
}

}  // namespace
