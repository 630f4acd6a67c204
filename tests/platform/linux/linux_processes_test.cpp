#include "platform/linux/linux_processes.h"

#include <gtest/gtest.h>

#include <csignal>
#include <filesystem>
#include <string>
#include <utility>
#include <vector>

#include "platform/error.h"
#include "platform/linux/installed_bundle.h"
#include "tests/support/scratch_folder.h"

namespace {

// Creates an executable shell script. Returns its path.
std::string makeScript(const std::string& path, const std::string& commands) {
  makeFile(path, "#!/bin/sh\n" + commands + "\n");
  std::filesystem::permissions(path, std::filesystem::perms::owner_all);
  return path;
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
