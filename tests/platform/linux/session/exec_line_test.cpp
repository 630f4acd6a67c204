#include "platform/linux/session/exec_line.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

#include "tests/support/environment_scope.h"
#include "tests/support/scratch_folder.h"

namespace {

using testing::ElementsAre;
using testing::Optional;

class ExecLineTest : public testing::Test {
 protected:
  // Returns the command of an entry file with this Exec line.
  std::optional<std::vector<std::string>> command(const std::string& line,
                                                  const std::string& more = "Name=My Name\nIcon=my icon\n") {
    makeFile(scratch_.path("entry.desktop"), "[Desktop Entry]\nType=Application\n" + more + "Exec=" + line + "\n");
    const auto entry = DesktopEntry::read(scratch_.path("entry.desktop"));
    EXPECT_TRUE(entry);
    return commandOf(*entry, "/the entry");
  }

  ScratchFolder scratch_;
  EnvironmentScope everything_{"LC_ALL", "C"};
};

TEST_F(ExecLineTest, argumentsAreSeparatedBySpaces) {
  EXPECT_THAT(command("program"), Optional(ElementsAre("program")));
  EXPECT_THAT(command("  program  --one   two  "), Optional(ElementsAre("program", "--one", "two")));
}

TEST_F(ExecLineTest, doubleQuotesKeepAnArgumentTogether) {
  EXPECT_THAT(command(R"("/a program" "" "two  words" a" "b)"),
              Optional(ElementsAre("/a program", "", "two  words", "a b")));
}

TEST_F(ExecLineTest, quotedBackslashesEscapeAfterTheFilesEscapes) {
  EXPECT_THAT(command(R"(p "\\"quote\\"" "\\`tick\\`" "\\$HOME" "back\\\\slash")"),
              Optional(ElementsAre("p", "\"quote\"", "`tick`", "$HOME", "back\\slash")));
  EXPECT_THAT(command(R"(p "\"a\"" "\$b" "\\c" "d\\\\")"), Optional(ElementsAre("p", "\"a\"", "$b", "\\c", "d\\")));
  EXPECT_THAT(command(R"(p a\\b a\sb)"), Optional(ElementsAre("p", "a\\b", "a", "b"))) << "not outside of quotes";
}

TEST_F(ExecLineTest, shellSyntaxHasNoMeaning) {
  EXPECT_THAT(command("p $HOME ~ * `date` a;b 'c d' > /dev/null"),
              Optional(ElementsAre("p", "$HOME", "~", "*", "`date`", "a;b", "'c", "d'", ">", "/dev/null")));
}

TEST_F(ExecLineTest, removesCodesForFiles) {
  for (const char* code : {"%f", "%F", "%u", "%U", "%d", "%D", "%n", "%N", "%v", "%m", "%f%u"})
    EXPECT_THAT(command(std::string("p -a ") + code + " -b"), Optional(ElementsAre("p", "-a", "-b"))) << code;
  EXPECT_THAT(command("p --file=%f"), Optional(ElementsAre("p", "--file=")));
}

TEST_F(ExecLineTest, expandsTheOtherCodes) {
  EXPECT_THAT(command("p %c %k 100%% %%f --title=%c"),
              Optional(ElementsAre("p", "My Name", "/the entry", "100%", "%f", "--title=My Name")));
  EXPECT_THAT(command("p %i x"), Optional(ElementsAre("p", "--icon", "my icon", "x")));
  EXPECT_THAT(command("p %i %c x", ""), Optional(ElementsAre("p", "x"))) << "an entry without either";
  everything_.set("de_DE.UTF-8");
  EXPECT_THAT(command("p %c", "Name=Name\nName[de]=Der Name\n"), Optional(ElementsAre("p", "Der Name")));
}

TEST_F(ExecLineTest, expansionsAreNotExpandedAgain) {
  EXPECT_THAT(command("p %c", "Name=%k \"a b\n"), Optional(ElementsAre("p", "%k \"a b")));
}

TEST_F(ExecLineTest, anInvalidLineHasNoCommand) {
  for (const char* line : {"", "  ", "p \"open", "p %", "p %x", "p a%q", "%f", "%U  "})
    EXPECT_EQ(command(line), std::nullopt) << line;
  makeFile(scratch_.path("entry.desktop"), "[Desktop Entry]\nType=Application\n");
  EXPECT_EQ(commandOf(*DesktopEntry::read(scratch_.path("entry.desktop")), ""), std::nullopt);
}

}  // namespace
