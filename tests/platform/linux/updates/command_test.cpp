#include "platform/linux/updates/command.h"

#include <gtest/gtest.h>

#include <csignal>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "tests/platform/linux/session/poll_loop.h"
#include "tests/support/environment_scope.h"

namespace {

class CommandTest : public testing::Test {
 protected:
  CommandResult run(const std::vector<std::string>& words) {
    std::optional<CommandResult> result;
    const Command command(loop_, words, [&](const CommandResult& ended) { result = ended; });
    EXPECT_FALSE(result) << "only the loop calls the handler";
    EXPECT_TRUE(loop_.runUntil([&] { return result.has_value(); }));
    return result.value_or(CommandResult{});
  }
  CommandResult shell(const std::string& script) { return run({"sh", "-c", script}); }

  PollLoop loop_;
};

TEST_F(CommandTest, returnsWhatAProgramPrintsAndItsStatus) {
  const CommandResult result = shell("echo out; echo err >&2; exit 3");
  EXPECT_EQ(result.output, "out\nerr\n");
  EXPECT_EQ(result.status, 3);
  EXPECT_EQ(shell("true").status, 0);
  EXPECT_EQ(shell("kill -9 $$").status, 128);
}

TEST_F(CommandTest, reportsAProgramThatCannotStart) {
  const CommandResult result = run({"no such program", "--option"});
  EXPECT_EQ(result.status, 127);
  EXPECT_EQ(result.output, "");
}

TEST_F(CommandTest, runsInEnglishWithoutInput) {
  const EnvironmentScope locale("LC_ALL", "de_DE.UTF-8");
  EXPECT_EQ(shell("echo \"$LC_ALL\"; cat").output, "C.UTF-8\n");
}

TEST_F(CommandTest, keepsTheEndOfALongOutput) {
  const CommandResult result = shell("for i in $(seq 20000); do echo $i; done");
  EXPECT_EQ(result.output.size(), 65536);
  EXPECT_TRUE(result.output.ends_with("19999\n20000\n"));
}

// A daemon that a package starts may keep the output open.
TEST_F(CommandTest, endsWithItsProgramNotWithItsOutput) {
  const CommandResult result = shell("sleep 1000 & echo $!");
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(kill(static_cast<pid_t>(std::stol(result.output)), SIGKILL), 0) << "it runs still";
}

TEST_F(CommandTest, mayBeDestroyedByItsHandler) {
  std::unique_ptr<Command> command;
  bool hasEnded = false;
  command = std::make_unique<Command>(loop_, std::vector<std::string>{"true"}, [&](const CommandResult&) {
    command = nullptr;
    hasEnded = true;
  });
  EXPECT_TRUE(loop_.runUntil([&] { return hasEnded; }));
}

TEST_F(CommandTest, callsNoHandlerAfterItsDestruction) {
  bool isCalled = false;
  std::make_unique<Command>(loop_, std::vector<std::string>{"true"}, [&](const CommandResult&) { isCalled = true; });
  shell("true");
  EXPECT_FALSE(isCalled);
}

}  // namespace
