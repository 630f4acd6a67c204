// Loading, finding, unloading and running login agents, with a configuration folder for each test.
#include "platform/linux/login_agents.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "platform/linux/plist/property_list_codec.h"
#include "platform/posix/file_descriptor.h"
#include "tests/support/program.h"
#include "tests/support/scratch_folder.h"
#include "values/plist_value.h"

namespace {

using testing::AllOf;
using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

constexpr int done = 0;
constexpr int notLoaded = 3;
constexpr int failed = 5;
constexpr int notFound = 113;
constexpr int wrongDomain = 125;

class LoginAgentsTest : public testing::Test {
 protected:
  // Runs quillery-launchctl and returns its exit status. Its output is in `ending_`.
  std::optional<int> launchctl(const std::vector<std::string>& arguments) {
    ending_ = run(QUILLERY_LAUNCHCTL_EXECUTABLE, arguments, {{"XDG_CONFIG_HOME", scratch_.path("config")}});
    return ending_.status;
  }
  // Writes the property list of an agent.
  void put(const PlistValue& agent) {
    makeFile(file_, std::string(PropertyListCodec().serialize(agent, PropertyListFormat::xml).text()));
  }
  // Writes the property list of an agent that runs a shell command.
  void putAgent(const std::string& command, bool runsAtLoad = false) {
    put(PlistValue::dictionary({{u"Label", u"com.example.agent"},
                                {u"ProgramArguments", PlistValue::array({u"/bin/sh", u"-c", utf16(command)})},
                                {u"RunAtLoad", runsAtLoad},
                                {u"StandardOutPath", utf16(scratch_.path("out.log"))},
                                {u"StandardErrorPath", utf16(scratch_.path("errors.log"))}}));
  }
  // Returns what a process writes to a named pipe until it closes the pipe. Fails the test if it never does.
  static std::string contentOfPipe(const FileDescriptor& pipe) {
    std::string content;
    std::array<char, 256> part{};
    for (;;) {
      pollfd waiting{pipe.get(), POLLIN, 0};
      EXPECT_EQ(poll(&waiting, 1, 30'000), 1) << "nobody has written to the pipe";
      const ssize_t count = read(pipe.get(), part.data(), part.size());
      if (count <= 0) return content;
      content.append(part.data(), static_cast<std::size_t>(count));
    }
  }

  // Returns the line that the program prints on standard error for a reason.
  std::string complaintStart() const { return "quillery-launchctl: " + file_ + ": "; }
  std::string complaint(const std::string& reason) const { return complaintStart() + reason + "\n"; }

  ScratchFolder scratch_;
  const std::string file_ = scratch_.path("an agent's $file \"%f\\.plist");
  const std::string entry_ = scratch_.path("config/autostart/com.example.agent.desktop");
  const std::string domain_ = "gui/" + std::to_string(getuid());
  const std::string target_ = domain_ + "/com.example.agent";
  Ending ending_;
};

TEST_F(LoginAgentsTest, areFoundOnlyWhileTheyAreLoaded) {
  putAgent("exit 0");
  EXPECT_EQ(launchctl({"print", target_}), notFound);
  EXPECT_EQ(launchctl({"bootout", target_}), notLoaded);
  EXPECT_EQ(launchctl({"bootstrap", domain_, file_}), done);
  EXPECT_EQ(launchctl({"print", target_}), done);
  EXPECT_EQ(launchctl({"bootout", target_}), done);
  EXPECT_EQ(launchctl({"print", target_}), notFound);
  EXPECT_EQ(launchctl({"bootstrap", domain_, file_}), done) << "it can be loaded again";
}

TEST_F(LoginAgentsTest, areAutostartEntriesThatRunTheirPropertyLists) {
  putAgent("exit 0");
  launchctl({"bootstrap", domain_, file_});
  EXPECT_THAT(contentOf(entry_),
              AllOf(HasSubstr("[Desktop Entry]\nType=Application\n"), HasSubstr("quillery-launchctl\" run \""),
                    HasSubstr("an agent's \\\\$file \\\\\"%%f\\\\\\\\.plist\"\n")));
}

TEST_F(LoginAgentsTest, areListedWithNameIconAndComment) {
  put(PlistValue::dictionary(
      {{u"Label", u"com.example.agent"}, {u"ProgramArguments", PlistValue::array({u"/usr/bin/a\\\tb", u"--login"})}}));
  EXPECT_EQ(launchctl({"bootstrap", domain_, file_}), done);
  EXPECT_THAT(contentOf(entry_), AllOf(HasSubstr("\nName=Quillery\n"), HasSubstr("\nIcon=com.example.agent\n"),
                                       HasSubstr("\nComment=Keeps Safari bookmarks in order, folders first\n"),
                                       HasSubstr("\nTryExec=/usr/bin/a\\\\\\tb\n"), Not(HasSubstr("NoDisplay"))));
}

TEST_F(LoginAgentsTest, haveOneCommandWhateverTheirFileIsCalled) {
  putAgent("exit 0");
  const std::string file = scratch_.path("an agent\nExec=false\r.plist");
  std::filesystem::rename(file_, file);
  EXPECT_EQ(launchctl({"bootstrap", domain_, file}), done);
  EXPECT_THAT(contentOf(entry_),
              AllOf(HasSubstr("/an agent\\nExec=false\\r.plist\"\n"), Not(HasSubstr("\nExec=false"))));
}

TEST_F(LoginAgentsTest, areNotLoadedFromPathsThatEntriesCannotHave) {
  putAgent("exit 0");
  for (const char* name : {"\x1b[2J.plist", "\x7f.plist", "\u009B31m.plist"}) {
    const std::string file = scratch_.path(name);
    std::filesystem::copy_file(file_, file);
    EXPECT_EQ(launchctl({"bootstrap", domain_, file}), failed);
    EXPECT_THAT(ending_.error, AllOf(HasSubstr("\\u{"), HasSubstr("control characters"), Not(HasSubstr("\x1b"))));
  }
  EXPECT_FALSE(std::filesystem::exists(scratch_.path("config/autostart")));
}

TEST_F(LoginAgentsTest, reportOneLineWhateverTheirFileIsCalled) {
  EXPECT_EQ(launchctl({"bootstrap", domain_, scratch_.path("a\nb\x1b.plist")}), failed);
  EXPECT_THAT(ending_.error, AllOf(HasSubstr("/a\\u{0A}b\\u{1B}.plist: "), Not(HasSubstr("\x1b"))));
  EXPECT_EQ(std::ranges::count(ending_.error, '\n'), 1);
}

TEST_F(LoginAgentsTest, areLoadedWithAbsolutePaths) {
  putAgent("exit 0");
  const std::string name = std::filesystem::path(file_).filename();
  const Ending ending = run("/bin/sh",
                            {"-c", "cd \"$1\" && exec \"$0\" bootstrap \"$2\" \"$3\"", QUILLERY_LAUNCHCTL_EXECUTABLE,
                             scratch_.path(), domain_, name},
                            {{"XDG_CONFIG_HOME", scratch_.path("config")}});
  EXPECT_EQ(ending.status, done) << ending.error;
  EXPECT_THAT(contentOf(entry_), HasSubstr(" run \"" + scratch_.path("an agent's ")));
}

TEST_F(LoginAgentsTest, areRunByTheProgramThatReplacedTheRunningOne) {
  putAgent("exit 0");
  const std::string program = scratch_.path("quillery-launchctl");
  std::filesystem::copy_file(QUILLERY_LAUNCHCTL_EXECUTABLE, program);
  const std::string script = "exec 9<\"$0\"; rm \"$0\"; echo new >\"$0\"; exec /proc/self/fd/9 bootstrap \"$1\" \"$2\"";
  const Ending ending =
      run("/bin/bash", {"-c", script, program, domain_, file_}, {{"XDG_CONFIG_HOME", scratch_.path("config")}});
  EXPECT_EQ(ending.status, done) << ending.error;
  EXPECT_THAT(contentOf(entry_), HasSubstr("Exec=\"" + program + "\" run "));
}

TEST_F(LoginAgentsTest, areRunByAProgramWhoseNameLooksRemoved) {
  putAgent("exit 0");
  const std::string program = scratch_.path("launchctl (deleted)");
  std::filesystem::copy_file(QUILLERY_LAUNCHCTL_EXECUTABLE, program);
  EXPECT_EQ(run(program, {"bootstrap", domain_, file_}, {{"XDG_CONFIG_HOME", scratch_.path("config")}}).status, done);
  EXPECT_THAT(contentOf(entry_), HasSubstr("Exec=\"" + program + "\" run "));
}

TEST_F(LoginAgentsTest, doNotWaitForAReaderOfTheirLog) {
  ASSERT_EQ(mkfifo(scratch_.path("out.log").c_str(), 0600), 0);
  putAgent("echo lost; exit 7");
  EXPECT_EQ(launchctl({"run", file_}), 7);
}

TEST_F(LoginAgentsTest, doNotWaitForAReaderOfAFullLog) {
  ASSERT_EQ(mkfifo(scratch_.path("out.log").c_str(), 0600), 0);
  const FileDescriptor pipe(open(scratch_.path("out.log").c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
  putAgent("head -c 1000000 /dev/zero; exit 7");
  EXPECT_EQ(launchctl({"run", file_}), 7);
}

TEST_F(LoginAgentsTest, haveLabelsOfOneLine) {
  put(PlistValue::dictionary(
      {{u"Label", u"agent\nExec=false"}, {u"ProgramArguments", PlistValue::array({u"/bin/sh"})}}));
  EXPECT_EQ(launchctl({"bootstrap", domain_, file_}), failed);
  EXPECT_THAT(ending_.error, HasSubstr("it has no valid Label"));
  put(PlistValue::dictionary({{u"Label", u"agent\x1b[2J"}, {u"ProgramArguments", PlistValue::array({u"/bin/sh"})}}));
  EXPECT_EQ(launchctl({"bootstrap", domain_, file_}), failed);
  EXPECT_THAT(ending_.error, HasSubstr("it has no valid Label"));
}

TEST_F(LoginAgentsTest, areStartedOnLoadIfRunAtLoadIsTrue) {
  putAgent("echo started; echo problem >&2", true);
  ASSERT_EQ(mkfifo(scratch_.path("out.log").c_str(), 0600), 0);
  const FileDescriptor pipe(open(scratch_.path("out.log").c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
  EXPECT_EQ(launchctl({"bootstrap", domain_, file_}), done);
  EXPECT_EQ(contentOfPipe(pipe), "started\n");
  EXPECT_EQ(contentOf(scratch_.path("errors.log")), "problem\n");
}

TEST_F(LoginAgentsTest, appendToTheirLogs) {
  makeFile(scratch_.path("out.log"), "earlier\n");
  putAgent("echo later");
  EXPECT_EQ(launchctl({"run", file_}), 0);
  EXPECT_EQ(contentOf(scratch_.path("out.log")), "earlier\nlater\n");
}

TEST_F(LoginAgentsTest, runWithoutALogThatCannotBeOpened) {
  put(PlistValue::dictionary({{u"Label", u"com.example.agent"},
                              {u"ProgramArguments", PlistValue::array({u"/bin/sh", u"-c", u"echo lost; exit 7"})},
                              {u"StandardOutPath", u"/none/at/all.log"}}));
  EXPECT_EQ(launchctl({"run", file_}), 7);
  EXPECT_EQ(ending_.output, "");
}

TEST_F(LoginAgentsTest, areNotLoadedTwice) {
  putAgent("exit 0");
  launchctl({"bootstrap", domain_, file_});
  EXPECT_EQ(launchctl({"bootstrap", domain_, file_}), failed);
  EXPECT_THAT(ending_.error, HasSubstr("it is already loaded"));
}

TEST_F(LoginAgentsTest, areLimitedToThisUsersSession) {
  putAgent("exit 0");
  EXPECT_EQ(launchctl({"bootstrap", "gui/99999999", file_}), wrongDomain);
  EXPECT_EQ(launchctl({"bootstrap", "system", file_}), wrongDomain);
  launchctl({"bootstrap", domain_, file_});
  EXPECT_EQ(launchctl({"print", "gui/99999999/com.example.agent"}), notFound);
  EXPECT_EQ(launchctl({"bootout", "gui/99999999/com.example.agent"}), notLoaded);
}

TEST_F(LoginAgentsTest, areRefusedWithoutAPropertyList) {
  EXPECT_EQ(launchctl({"bootstrap", domain_, file_}), failed);
  EXPECT_THAT(ending_.error, HasSubstr("No such file or directory"));
  makeFile(file_, "<no property list");
  EXPECT_EQ(launchctl({"bootstrap", domain_, file_}), failed);
  put(PlistValue::array({}));
  EXPECT_EQ(launchctl({"bootstrap", domain_, file_}), failed);
  EXPECT_THAT(ending_.error, HasSubstr("it has no valid Label"));
}

TEST_F(LoginAgentsTest, areRefusedWithoutArgumentsThatAreStrings) {
  for (const PlistValue& arguments : {PlistValue(u"/bin/true"), PlistValue::array({}), PlistValue::array({1})}) {
    put(PlistValue::dictionary({{u"Label", u"com.example.agent"}, {u"ProgramArguments", arguments}}));
    EXPECT_EQ(launchctl({"bootstrap", domain_, file_}), failed);
    EXPECT_THAT(ending_.error, HasSubstr("ProgramArguments"));
  }
}

TEST_F(LoginAgentsTest, reachNoFileOutsideTheirFolder) {
  put(PlistValue::dictionary({{u"Label", u"../../escaped"}, {u"ProgramArguments", PlistValue::array({u"/bin/true"})}}));
  EXPECT_EQ(launchctl({"bootstrap", domain_, file_}), failed);
  std::filesystem::create_directories(scratch_.path("config/autostart"));
  makeFile(scratch_.path("config/victim.desktop"), "kept");
  EXPECT_EQ(launchctl({"bootout", domain_ + "/../victim"}), notLoaded);
  EXPECT_EQ(contentOf(scratch_.path("config/victim.desktop")), "kept");
}

TEST_F(LoginAgentsTest, reportWhyTheirProgramCannotBeRun) {
  put(PlistValue::dictionary({{u"Label", u"com.example.agent"},
                              {u"ProgramArguments", PlistValue::array({u"/none/at/all"})},
                              {u"StandardOutPath", utf16(scratch_.path("out.log"))},
                              {u"StandardErrorPath", utf16(scratch_.path("errors.log"))}}));
  EXPECT_EQ(launchctl({"run", file_}), failed);
  EXPECT_EQ(contentOf(scratch_.path("errors.log")),
            complaint("its program couldn’t be run: No such file or directory"));
  EXPECT_EQ(contentOf(scratch_.path("out.log")), "");
  EXPECT_EQ(ending_.output + ending_.error, "");
}

TEST_F(LoginAgentsTest, reportWhyTheirPropertyListCannotBeRead) {
  EXPECT_EQ(launchctl({"run", file_}), failed);
  EXPECT_EQ(ending_.error, complaint("The file “" + std::filesystem::path(file_).filename().string() +
                                     "” couldn’t be opened: No such file or directory (" + file_ + ")."));
  EXPECT_EQ(ending_.output, "");
}

TEST_F(LoginAgentsTest, reportWhatIsWrongWithTheirPropertyList) {
  makeFile(file_, "<no property list");
  EXPECT_EQ(launchctl({"run", file_}), failed);
  EXPECT_THAT(ending_.error, StartsWith(complaintStart()));
  EXPECT_THAT(ending_.error, EndsWith(".\n"));
  put(PlistValue::array({}));
  EXPECT_EQ(launchctl({"run", file_}), failed);
  EXPECT_EQ(ending_.error, complaint("it has no valid Label"));
  put(PlistValue::dictionary({{u"Label", u"com.example.agent"}}));
  EXPECT_EQ(launchctl({"run", file_}), failed);
  EXPECT_EQ(ending_.error, complaint("it has no ProgramArguments"));
  put(PlistValue::dictionary(
      {{u"Label", u"com.example.agent"}, {u"ProgramArguments", PlistValue::array({u"/bin/sh", 1})}}));
  EXPECT_EQ(launchctl({"run", file_}), failed);
  EXPECT_EQ(ending_.error, complaint("its ProgramArguments are not an array of strings"));
  EXPECT_EQ(ending_.output, "");
}

TEST_F(LoginAgentsTest, refuseOtherCommands) {
  for (const std::vector<std::string>& words : std::vector<std::vector<std::string>>{{}, {"print"}, {"list", "x"}}) {
    EXPECT_EQ(launchctl(words), 64);
    EXPECT_THAT(ending_.error, HasSubstr("usage: "));
  }
}

}  // namespace
