// The companion's arguments: the requests and the error messages.
#include "companion/command_line.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

Request request(const Arguments& arguments) {
  const auto asked = requestOf(arguments);
  if (const auto* complaint = std::get_if<Complaint>(&asked)) ADD_FAILURE() << complaint->text;
  return std::holds_alternative<Request>(asked) ? std::get<Request>(asked) : Request{Command::help};
}

std::string noOption(const std::string& command, const std::string& option) {
  return "“" + command + "” has no option “" + option + "”";
}

std::string complaint(const Arguments& arguments) {
  const auto asked = requestOf(arguments);
  return std::holds_alternative<Complaint>(asked) ? std::get<Complaint>(asked).text : "no complaint";
}

TEST(CommandLine, recognisesEachCommand) {
  EXPECT_EQ(request({"preview"}).command, Command::preview);
  EXPECT_EQ(request({"sort"}).command, Command::sort);
  EXPECT_EQ(request({"check"}).command, Command::check);
  EXPECT_EQ(request({"backups"}).command, Command::backups);
  EXPECT_EQ(request({"restore", "x"}).command, Command::restore);
  EXPECT_EQ(request({"undo"}).command, Command::undo);
  EXPECT_EQ(request({"next"}).command, Command::next);
  EXPECT_EQ(request({"help"}).command, Command::help);
  EXPECT_EQ(request({"--help"}).command, Command::help);
  EXPECT_EQ(request({"-h"}).command, Command::help);
  EXPECT_EQ(request({"--version"}).command, Command::version);
}

TEST(CommandLine, takesOperandsAfterTheCommand) {
  EXPECT_THAT(request({"sort"}).operands, IsEmpty());
  EXPECT_THAT(request({"sort", "a b"}).operands, ElementsAre("a b"));
  EXPECT_THAT(request({"restore", "a", "b"}).operands, ElementsAre("a", "b"));
  EXPECT_THAT(request({"sort", "-"}).operands, ElementsAre("-"));
  EXPECT_THAT(request({"sort", ""}).operands, ElementsAre(""));
}

TEST(CommandLine, acceptsOptionsAnywhere) {
  const Request longForm = request({"--all", "preview", "file", "--json", "--quiet"});
  EXPECT_TRUE(longForm.all && longForm.json && longForm.quiet);
  EXPECT_THAT(longForm.operands, ElementsAre("file"));
  const Request shortForm = request({"preview", "-j"});
  EXPECT_TRUE(shortForm.json);
  EXPECT_FALSE(shortForm.all || shortForm.quiet);
  EXPECT_TRUE(request({"preview", "-a"}).all);
  for (const char* command : {"sort", "check", "backups", "undo", "next"}) EXPECT_TRUE(request({command, "-q"}).quiet);
}

TEST(CommandLine, takesArgumentsAfterTwoDashesAsOperands) {
  EXPECT_THAT(request({"sort", "--", "--all"}).operands, ElementsAre("--all"));
  EXPECT_THAT(request({"restore", "--", "--", "-q"}).operands, ElementsAre("--", "-q"));
  EXPECT_EQ(request({"--", "sort"}).command, Command::sort);
  EXPECT_EQ(request({"sort", "--", "--help"}).command, Command::sort);
}

TEST(CommandLine, acceptsHelpAnywhere) {
  EXPECT_EQ(request({"sort", "--help"}).command, Command::help);
  EXPECT_EQ(request({"--help", "nonsense", "--more"}).command, Command::help);
}

TEST(CommandLine, needsACommand) {
  EXPECT_EQ(complaint({}), "there is no command");
  EXPECT_EQ(complaint({"--"}), "there is no command");
  EXPECT_EQ(complaint({"--sort"}), "there is no command with “--sort”");
  EXPECT_EQ(complaint({"--version", "--quiet"}), "there is no command with “--version”");
}

TEST(CommandLine, namesTheFirstOperandAsTheUnknownCommand) {
  EXPECT_EQ(complaint({"--quiet", "ordered", "sort", "--all"}), "there is no command “ordered”");
  EXPECT_EQ(complaint({"--sorted", "--all"}), "there is no command with “--sorted”");
}

TEST(CommandLine, refusesUnknownCommands) {
  for (const char* name : {"", "-", "xyzzy", "sortsort", "prview-all"})
    EXPECT_EQ(complaint({name}), "there is no command “" + std::string(name) + "”");
}

TEST(CommandLine, namesTheCommandThatIsNearest) {
  for (const auto& [typed, meant] : {std::pair("sotr", "sort"),
                                     {"Sort", "sort"},
                                     {"backup", "backups"},
                                     {"reviews", "preview"},
                                     {"undoo", "undo"},
                                     {"so", "sort"},
                                     {"restroe", "restore"}})
    EXPECT_EQ(complaint({typed}), "there is no command “" + std::string(typed) + "” (did you mean “" + meant + "”?)");
}

TEST(CommandLine, refusesUnknownOptions) {
  for (const char* name : {"--ALL", "--al", "-x", "-qj", "--json=1", "-all", "--version"})
    EXPECT_EQ(complaint({"preview", name}), "there is no option “" + std::string(name) + "”");
}

TEST(CommandLine, acceptsEachOptionForItsCommandsOnly) {
  const std::vector<std::pair<std::string, std::vector<std::string>>> others = {
      {"--all", {"sort", "check", "backups", "restore", "undo", "next"}},
      {"-a", {"sort", "check", "backups", "restore", "undo", "next"}},
      {"--json", {"sort", "restore", "undo"}},
      {"--dry-run", {"preview", "check", "backups", "restore", "undo", "next"}},
      {"--output=x", {"preview", "check", "backups", "restore", "undo", "next"}}};
  for (const auto& [option, commands] : others)
    for (const std::string& command : commands) EXPECT_EQ(complaint({command, option}), noOption(command, option));
  for (const char* command : {"preview", "check", "backups", "next"}) EXPECT_TRUE(request({command, "-j"}).json);
}

TEST(CommandLine, takesADryRunOfASortForAPreview) {
  EXPECT_EQ(request({"sort", "--dry-run", "file"}).command, Command::preview);
  EXPECT_EQ(request({"sort", "-n"}).command, Command::preview);
  EXPECT_EQ(complaint({"sort", "-n", "-o", "x"}), "“--dry-run” writes nothing, so it takes no “-o”");
}

TEST(CommandLine, takesValuesOfOptions) {
  EXPECT_EQ(request({"sort", "-o", "out", "in"}).output, "out");
  EXPECT_EQ(request({"sort", "in", "--output", "-o"}).output, "-o");
  EXPECT_EQ(request({"sort", "--output=a=b"}).output, "a=b");
  EXPECT_THAT(request({"sort", "-o", "out", "in"}).operands, ElementsAre("in"));
  EXPECT_EQ(complaint({"sort", "-o"}), "“-o” needs a value");
  for (const char* value : {"always", "never", "auto"}) {
    EXPECT_EQ(request({"preview", "--color", value}).color, value);
    const std::string joined = "--color=" + std::string(value);
    EXPECT_EQ(request({joined, "backups"}).color, value);
  }
  EXPECT_EQ(complaint({"preview", "--color=red"}), "“--color” is always, never or auto");
}

TEST(CommandLine, takesSeveralFilesWhereThatIsPossible) {
  for (const char* command : {"preview", "sort", "check"})
    EXPECT_THAT(request({command, "a", "b", "c"}).operands, ElementsAre("a", "b", "c"));
  for (const Arguments& arguments : {Arguments{"sort", "-o", "x", "a", "b"}, {"sort", "-", "a"}, {"sort", "a", "-"}})
    EXPECT_EQ(complaint(arguments), "“sort” writes one file to “-o” or “-”");
  for (const char* command : {"backups", "restore", "undo"})
    EXPECT_EQ(complaint({command, "-"}), "“-” is for preview, sort and check");
}

TEST(CommandLine, acceptsForeignForRestoreOnly) {
  EXPECT_TRUE(request({"restore", "--foreign", "a", "b"}).foreign);
  for (const char* command : {"preview", "sort", "check", "backups", "next"})
    EXPECT_EQ(complaint({command, "--foreign"}), noOption(command, "--foreign"));
}

TEST(CommandLine, refusesTooManyOperands) {
  EXPECT_EQ(complaint({"undo", "a", "b"}), "“b” is one argument too many for “undo”");
  EXPECT_EQ(complaint({"backups", "a", "b"}), "“b” is one argument too many for “backups”");
  EXPECT_EQ(complaint({"next", "a"}), "“a” is one argument too many for “next”");
  EXPECT_EQ(complaint({"restore", "a", "b", "c"}), "“c” is one argument too many for “restore”");
}

TEST(CommandLine, restoreNeedsTheNameOfABackup) {
  EXPECT_EQ(complaint({"restore"}), "“restore” needs the name of a backup");
}

}  // namespace
