#include "platform/linux/replaced_process.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <string>

#include "platform/error.h"
#include "tests/support/scratch_folder.h"

namespace {

// Writes a shell script. Returns its path.
std::string writeScript(const ScratchFolder& folder, const std::string& text) {
  std::string path = folder.path() + "/script";
  makeFile(path, "#!/bin/sh\n" + text);
  std::filesystem::permissions(path, std::filesystem::perms::owner_all);
  return path;
}

TEST(ReplacedProcess, theOtherProgramEndsTheProcess) {
  const ScratchFolder folder;
  const std::string script = writeScript(folder, "echo $# arguments >&2; [ $$ = \"$OLD_PROCESS\" ] && exit 7\n");
  EXPECT_EXIT(
      {
        setenv("OLD_PROCESS", std::to_string(getpid()).c_str(), 1);
        replaceProcess(script);
      },
      testing::ExitedWithCode(7), "0 arguments");
}

TEST(ReplacedProcess, inheritsOnlyStandardStreams) {
  const ScratchFolder folder;
  const std::string script = writeScript(folder, "[ ! -e /proc/$$/fd/50 ] && [ -e /proc/$$/fd/2 ] && exit 7\n");
  EXPECT_EXIT(
      {
        dup2(open("/dev/null", O_RDONLY), 50);
        replaceProcess(script);
      },
      testing::ExitedWithCode(7), "");
}

TEST(ReplacedProcess, aMissingProgramIsAnError) {
  try {
    replaceProcess("/nowhere/at all");
  } catch (const Error& error) {
    EXPECT_EQ(error.description(), "The program “/nowhere/at all” couldn’t be run: No such file or directory.");
  }
}

}  // namespace
