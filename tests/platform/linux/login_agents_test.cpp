// Login agents in a session of a test's own: loaded, found, unloaded, and run.
#include "platform/linux/login_agents.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <string>

#include "values/plist_value.h"
#include "platform/linux/plist/property_list_codec.h"
#include "tests/platform/linux/scratch_folder.h"
#include "tests/support/program.h"

namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::Not;

constexpr int done = 0;
constexpr int notLoaded = 3;
constexpr int failed = 5;
constexpr int notFound = 113;
constexpr int wrongDomain = 125;

class LoginAgentsTest : public testing::Test {
 protected:
  // What the program answers, started as it is by whoever registers an agent.
  std::optional<int> launchctl(const std::vector<std::string>& arguments) {
    ending_ = run(QUILLERY_LAUNCHCTL_EXECUTABLE, arguments, {{"XDG_CONFIG_HOME", scratch_.path("config")}});
    return ending_.status;
  }
  void put(const PlistValue& agent) {
    makeFile(file_, std::string(PropertyListCodec().serialize(agent, PropertyListFormat::xml).text()));
  }
  // An agent that runs a shell's command.
  void putAgent(const std::string& command, bool runsAtLoad = false) {
    put(PlistValue::dictionary({{u"Label", u"com.example.agent"},
                                {u"ProgramArguments", PlistValue::array({u"/bin/sh", u"-c", utf16(command)})},
                                {u"RunAtLoad", runsAtLoad},
                                {u"StandardOutPath", utf16(scratch_.path("out.log"))},
                                {u"StandardErrorPath", utf16(scratch_.path("errors.log"))}}));
  }
  // Waits for a file to hold this; the test fails if that takes too long.
  static void expectSoon(const std::string& path, const std::string& content) {
    const auto isThere = [&] { return std::filesystem::exists(path) && contentOf(path) == content; };
    for (int attempt = 0; attempt < 500 && !isThere(); ++attempt) usleep(10'000);
    EXPECT_EQ(contentOf(path), content);
  }

  ScratchFolder scratch_;
  const std::string file_ = scratch_.path("an agent's $file \"%f\\.plist");
  const std::string entry_ = scratch_.path("config/autostart/com.example.agent.desktop");
  const std::string domain_ = "gui/" + std::to_string(getuid());
  const std::string target_ = domain_ + "/com.example.agent";
  Ending ending_;
};

TEST_F(LoginAgentsTest, areNotFoundUntilTheyAreLoadedAndNoLongerOnceTheyAreNot) {
  putAgent("exit 0");
  EXPECT_EQ(launchctl({"print", target_}), notFound);
  EXPECT_EQ(launchctl({"bootout", target_}), notLoaded);
  EXPECT_EQ(launchctl({"bootstrap", domain_, file_}), done);
  EXPECT_EQ(launchctl({"print", target_}), done);
  EXPECT_EQ(launchctl({"bootout", target_}), done);
  EXPECT_EQ(launchctl({"print", target_}), notFound);
  EXPECT_EQ(launchctl({"bootstrap", domain_, file_}), done) << "and can be loaded again";
}

TEST_F(LoginAgentsTest, areAutostartEntriesThatRunTheirPropertyLists) {
  putAgent("exit 0");
  launchctl({"bootstrap", domain_, file_});
  EXPECT_THAT(contentOf(entry_),
              AllOf(HasSubstr("[Desktop Entry]\nType=Application\n"), HasSubstr("quillery-launchctl\" run \""),
                    HasSubstr("an agent's \\\\$file \\\\\"%%f\\\\\\\\.plist\"\n")));
}

TEST_F(LoginAgentsTest, haveOneCommandInTheirEntriesWhateverTheirPropertyListsAreCalled) {
  putAgent("exit 0");
  const std::string file = scratch_.path("an agent\nExec=false\r.plist");
  std::filesystem::rename(file_, file);
  EXPECT_EQ(launchctl({"bootstrap", domain_, file}), done);
  EXPECT_THAT(contentOf(entry_),
              AllOf(HasSubstr("/an agent\\nExec=false\\r.plist\"\n"), Not(HasSubstr("\nExec=false"))));
}

TEST_F(LoginAgentsTest, haveLabelsOfOneLine) {
  put(PlistValue::dictionary(
      {{u"Label", u"agent\nExec=false"}, {u"ProgramArguments", PlistValue::array({u"/bin/sh"})}}));
  EXPECT_EQ(launchctl({"bootstrap", domain_, file_}), failed);
  EXPECT_THAT(ending_.error, HasSubstr("it has no Label"));
}

TEST_F(LoginAgentsTest, areStartedWhenTheyAreLoadedIfTheySaySo) {
  putAgent("echo started; echo problem >&2", true);
  EXPECT_EQ(launchctl({"bootstrap", domain_, file_}), done);
  expectSoon(scratch_.path("out.log"), "started\n");
  expectSoon(scratch_.path("errors.log"), "problem\n");
}

TEST_F(LoginAgentsTest, appendToTheirLogs) {
  makeFile(scratch_.path("out.log"), "earlier\n");
  putAgent("echo later");
  EXPECT_EQ(launchctl({"run", file_}), 0);
  EXPECT_EQ(contentOf(scratch_.path("out.log")), "earlier\nlater\n");
}

TEST_F(LoginAgentsTest, runWithoutLogsWhereThereCanBeNone) {
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
  EXPECT_THAT(ending_.error, HasSubstr("it is loaded already"));
}

TEST_F(LoginAgentsTest, areOfThisUsersSessionOnly) {
  putAgent("exit 0");
  EXPECT_EQ(launchctl({"bootstrap", "gui/99999999", file_}), wrongDomain);
  EXPECT_EQ(launchctl({"bootstrap", "system", file_}), wrongDomain);
  launchctl({"bootstrap", domain_, file_});
  EXPECT_EQ(launchctl({"print", "gui/99999999/com.example.agent"}), notFound);
  EXPECT_EQ(launchctl({"bootout", "gui/99999999/com.example.agent"}), notLoaded);
}

TEST_F(LoginAgentsTest, areRefusedIfTheirPropertyListsAreNone) {
  EXPECT_EQ(launchctl({"bootstrap", domain_, file_}), failed);
  EXPECT_THAT(ending_.error, HasSubstr("No such file or directory"));
  makeFile(file_, "<no property list");
  EXPECT_EQ(launchctl({"bootstrap", domain_, file_}), failed);
  put(PlistValue::array({}));
  EXPECT_EQ(launchctl({"bootstrap", domain_, file_}), failed);
  EXPECT_THAT(ending_.error, HasSubstr("it has no Label"));
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

TEST_F(LoginAgentsTest, thatCannotBeRunSaySo) {
  put(PlistValue::dictionary({{u"Label", u"com.example.agent"},
                              {u"ProgramArguments", PlistValue::array({u"/none/at/all"})},
                              {u"StandardErrorPath", utf16(scratch_.path("errors.log"))}}));
  EXPECT_EQ(launchctl({"run", file_}), failed);
  EXPECT_THAT(contentOf(scratch_.path("errors.log")), HasSubstr("its program cannot be run"));
}

TEST_F(LoginAgentsTest, haveNoOtherCommands) {
  for (const std::vector<std::string>& words : std::vector<std::vector<std::string>>{{}, {"print"}, {"list", "x"}}) {
    EXPECT_EQ(launchctl(words), 64);
    EXPECT_THAT(ending_.error, HasSubstr("usage: "));
  }
}

}  // namespace
