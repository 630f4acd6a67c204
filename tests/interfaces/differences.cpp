#include "tests/interfaces/differences.h"

#include <algorithm>
#include <array>

namespace {

constexpr std::string_view gapReason =
    "Near changes of the clock that are not an hour long, not at a full hour or at midnight, Foundation finds a later "
    "hour, another weekday or another week. Such changes are rare, and the next sort is at most a week late.";
constexpr std::string_view processReason =
    "A test decides what the processes of a virtual machine are and how they end, and none is started.";

constexpr std::array all = {
    Difference{
        "CalendarTest.keepsItsZoneAfterTheNextCall/Civil", "2026-07-01 21:00:00 day 4",
        "The C library has one current zone, and only it knows every notation of TZ. No caller keeps a calendar."},
    Difference{"CalendarVectors.areFoundNearUnusualChangesOfTheClock/Foundation", "row.expected", gapReason},
    Difference{"ProcessesTest.makeUuidsOfEveryDigitAtEveryPlace/Virtual", "place ", "Its UUIDs count up."},
    Difference{"ProcessesTest.identifyThisProcess/Virtual", "getpid()", processReason},
    Difference{"ProcessesTest.distinguishATerminalFromAFile/Virtual", "forTerminal", processReason},
    Difference{"ProcessesTest.readVariablesOfTheEnvironment/Virtual", "QUILLERY_TEST_VARIABLE", processReason},
    Difference{"ProcessesTest.knowTheWorkingFolder/Virtual", "/home/user/folder", processReason},
    Difference{"ProcessesTest.returnTheExitStatusOfAProgram/Virtual", "exit 113", processReason},
    Difference{"ProcessesTest.returnTheSignalThatEndedAProgram/Virtual", "kill -KILL", processReason},
    Difference{"ProcessesTest.passArgumentsUnchangedAndWait/Virtual", "note.txt", processReason},
    Difference{"ProcessesTest.giveAProgramNoInputAndDiscardItsOutput/Virtual", "status", processReason},
    Difference{"ProcessesTest.refuseToRunWhatIsNoProgram/Virtual", "none", processReason},
    Difference{"ProcessesTest.pauseForAtLeastTheGivenTime/Virtual", "steady_clock", "Its time is virtual."},
};

}  // namespace

std::span<const Difference> differences() { return all; }

const Difference* differenceOf(const std::string& test) {
  const auto found = std::ranges::find(all, test, &Difference::test);
  return found == all.end() ? nullptr : &*found;
}

std::string nameOfRunningTest() {
  const testing::TestInfo* const test = testing::UnitTest::GetInstance()->current_test_info();
  const std::string suite = test->test_suite_name();
  return suite.substr(suite.find('/') + 1) + "." + test->name();
}

std::string ListedFailure::problem() {
  reporter_.reset();
  std::string messages;
  for (int index = 0; index < results_.size(); ++index)
    if (const auto& result = results_.GetTestPartResult(index); result.failed()) messages += result.message();
  if (messages.empty())
    return "this test passes, but is listed as a difference because " + std::string(difference_.reason);
  if (messages.find(difference_.failure) != std::string::npos) return {};
  return "this test fails, but not with \"" + std::string(difference_.failure) + "\" as listed: " + messages;
}
