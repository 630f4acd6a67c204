// The scheduling suite: that it passes, and that each mistake that it is there for ends the process.
#include "schedule/scheduling_suite.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <csignal>
#include <functional>
#include <iostream>
#include <vector>

#include "schedule/next_sort_date.h"
#include "tests/support/altered_platforms.h"
#include "tests/support/virtual_machine.h"

namespace {

using testing::IsEmpty;
using testing::KilledBySignal;

class SchedulingSuiteDeathTest : public testing::Test {
 protected:
  // Runs the suite in a process of its own, whose standard output is seen on standard error.
  static void runShowingOutput(const SchedulingFunctions& functions) {
    std::cout.rdbuf(std::cerr.rdbuf());
    runSchedulingSuite(functions);
  }

  // The same with calendars that search otherwise.
  static void runWithSearch(const AlteredCalendars::Search& search) {
    std::cout.rdbuf(std::cerr.rdbuf());
    AlteredCalendars calendars(platform().calendars, search);
    const Platform altered = with(calendars);
    const PlatformScope scope(altered);
    runSchedulingSuite();
  }

  // The program's own functions, to be changed in one.
  static SchedulingFunctions right() {
    return {nextSortDate, [](Instant after, const MatchingTime& matching, const Calendar& calendar) {
              return calendar.nextDate(after, matching);
            }};
  }

  VirtualMachine machine_;
};

TEST_F(SchedulingSuiteDeathTest, passesOnTheProgramsOwnRuleAndPrintsNothing) {
  runSchedulingSuite();
  EXPECT_THAT(machine_.journal.entries(), IsEmpty());
}

TEST_F(SchedulingSuiteDeathTest, passesWhereverTheUserIs) {
  for (const char* zone : {"UTC", "America/New_York", "Pacific/Apia", "Asia/Kathmandu"}) {
    machine_.calendars.moveTo(zone);
    runSchedulingSuite();
  }
}

TEST_F(SchedulingSuiteDeathTest, endsTheProcessOnASearchOnOrAfter) {
  EXPECT_EXIT(runWithSearch(onOrAfter), KilledBySignal(SIGABRT), IsEmpty());
}

TEST_F(SchedulingSuiteDeathTest, endsTheProcessIfWeekdaysCountFromZero) {
  EXPECT_EXIT(runWithSearch(withWeekdaysFromZero), KilledBySignal(SIGABRT), IsEmpty());
}

TEST_F(SchedulingSuiteDeathTest, endsTheProcessIfNothingIsFoundInAGap) {
  EXPECT_EXIT(runWithSearch(withoutGaps), KilledBySignal(SIGABRT), IsEmpty());
}

TEST_F(SchedulingSuiteDeathTest, endsTheProcessIfNothingIsFoundAtAll) {
  EXPECT_EXIT(runWithSearch(findingNothing), KilledBySignal(SIGABRT), IsEmpty());
}

TEST_F(SchedulingSuiteDeathTest, endsTheProcessIfARuleTakesWeekdaysFromZero) {
  SchedulingFunctions wrong = right();
  wrong.rule = [](Instant after, int hour, int minute, const std::vector<int>& days, const Calendar& calendar) {
    std::vector<int> shifted(days);
    for (int& day : shifted) day = day % 7 + 1;
    return nextSortDate(after, hour, minute, shifted, calendar);
  };
  EXPECT_EXIT(runShowingOutput(wrong), KilledBySignal(SIGABRT), IsEmpty());
}

TEST_F(SchedulingSuiteDeathTest, endsTheProcessIfARulePassesOverMondays) {
  SchedulingFunctions wrong = right();
  wrong.rule = [](Instant after, int hour, int minute, std::vector<int> days, const Calendar& calendar) {
    std::erase(days, 2);
    return nextSortDate(after, hour, minute, days, calendar);
  };
  EXPECT_EXIT(runShowingOutput(wrong), KilledBySignal(SIGABRT), IsEmpty());
}

TEST_F(SchedulingSuiteDeathTest, endsTheProcessIfARuleTakesNoDaysForEveryDay) {
  SchedulingFunctions wrong = right();
  wrong.rule = [](Instant after, int hour, int minute, const std::vector<int>& days, const Calendar& calendar) {
    return nextSortDate(after, hour, minute, days.empty() ? std::vector<int>{1, 2, 3, 4, 5, 6, 7} : days, calendar);
  };
  EXPECT_EXIT(runShowingOutput(wrong), KilledBySignal(SIGABRT), IsEmpty());
}

TEST_F(SchedulingSuiteDeathTest, endsTheProcessIfARuleTakesTheFirstDayOfTheListForTheEarliest) {
  SchedulingFunctions wrong = right();
  wrong.rule = [](Instant after, int hour, int minute, const std::vector<int>& days, const Calendar& calendar) {
    return nextSortDate(after, hour, minute, days.empty() ? days : std::vector<int>{days.front()}, calendar);
  };
  EXPECT_EXIT(runShowingOutput(wrong), KilledBySignal(SIGABRT), IsEmpty());
}

TEST_F(SchedulingSuiteDeathTest, wouldShowWhatWasPrinted) {
  SchedulingFunctions talkative = right();
  talkative.search = [](Instant, const MatchingTime&, const Calendar&) {
    std::cout << "printed";
    return std::nullopt;
  };
  EXPECT_EXIT(runShowingOutput(talkative), KilledBySignal(SIGABRT), "^printed$");
}

}  // namespace
