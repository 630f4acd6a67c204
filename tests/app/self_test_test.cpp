// The self-test on platforms with a mistake.
#include "app/self_test.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <csignal>
#include <iostream>
#include <string>
#include <vector>

#include "tests/support/altered_platforms.h"
#include "tests/support/virtual_machine.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::KilledBySignal;

const std::string bothLines =
    "PASS: daily, weekdays, weekends, selected days, empty selection and daylight-saving gap\n"
    "PASS: recursive sort, folders first, natural names, Reading List preserved, idempotence\n";

class SelfTestDeathTest : public testing::Test {
 protected:
  // Runs the self-test on an altered platform, with standard output sent to standard error, which death tests check.
  template <class Part>
  static void runWith(Part& part) {
    std::cout.rdbuf(std::cerr.rdbuf());
    const Platform altered = with(part);
    const PlatformScope scope(altered);
    runSelfTest();
  }

  VirtualMachine machine_;
};

TEST_F(SelfTestDeathTest, printsBothLinesAtOnceAndTouchesNothingElse) {
  runSelfTest();
  EXPECT_THAT(machine_.journal.entries(), ElementsAre("printed " + bothLines));
}

// The sorting suite is seen by its comparisons of titles, the scheduling suite by its searches of a calendar.
TEST_F(SelfTestDeathTest, runsTheSortingSuiteBeforeTheSchedulingSuite) {
  std::vector<std::string> suites;
  const auto note = [&](const std::string& suite) {
    if (suites.empty() || suites.back() != suite) suites.push_back(suite);
  };
  ReportingCollation collation(machine_.collation, [&] { note("sorting"); });
  AlteredCalendars calendars(machine_.calendars, [&](const Calendar& calendar, Instant after, MatchingTime matching) {
    note("scheduling");
    return calendar.nextDate(after, matching);
  });
  const Platform withCollation = with(collation);
  const PlatformScope collationScope(withCollation);
  const Platform withBoth = with(calendars);
  const PlatformScope calendarsScope(withBoth);
  runSelfTest();
  EXPECT_THAT(suites, ElementsAre("sorting", "scheduling"));
}

TEST_F(SelfTestDeathTest, abortsSilentlyOnACaseSensitiveOrder) {
  CaseSensitiveCollation collation;
  EXPECT_EXIT(runWith<Collation>(collation), KilledBySignal(SIGABRT), IsEmpty());
}

TEST_F(SelfTestDeathTest, abortsSilentlyOnASearchOnOrAfter) {
  AlteredCalendars calendars(machine_.calendars, onOrAfter);
  EXPECT_EXIT(runWith<Calendars>(calendars), KilledBySignal(SIGABRT), IsEmpty())
      << "the other line is not printed either";
}

TEST_F(SelfTestDeathTest, abortsSilentlyOnZeroBasedWeekdays) {
  AlteredCalendars calendars(machine_.calendars, withWeekdaysFromZero);
  EXPECT_EXIT(runWith<Calendars>(calendars), KilledBySignal(SIGABRT), IsEmpty());
}

TEST_F(SelfTestDeathTest, abortsSilentlyIfThePlatformThrows) {
  AlteredCalendars calendars(machine_.calendars, [](const Calendar&, Instant, MatchingTime) -> std::optional<Instant> {
    throw Error("Test", 1, "no calendar");
  });
  EXPECT_EXIT(runWith<Calendars>(calendars), KilledBySignal(SIGABRT), IsEmpty());
}

}  // namespace
