// The scheduling suite of the self-test: it passes on a correct rule, and every wrong rule ends the process.
#include "schedule/scheduling_suite.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <functional>
#include <iostream>
#include <optional>
#include <utility>
#include <vector>

#include "schedule/next_sort_date.h"
#include "tests/support/altered_platforms.h"
#include "tests/support/virtual_machine.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::KilledBySignal;

class SchedulingSuiteDeathTest : public testing::Test {
 protected:
  // Runs the suite with standard output sent to standard error, which death tests check.
  static void runShowingOutput(const SchedulingFunctions& functions) {
    std::cout.rdbuf(std::cerr.rdbuf());
    runSchedulingSuite(functions);
  }

  // The same with the program's own functions on calendars with another search.
  static void runWithSearch(const AlteredCalendars::Search& search) {
    std::cout.rdbuf(std::cerr.rdbuf());
    AlteredCalendars calendars(platform().calendars, search);
    const Platform altered = with(calendars);
    const PlatformScope scope(altered);
    runSchedulingSuite();
  }

  // The program's own functions; a test replaces one of them.
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

TEST_F(SchedulingSuiteDeathTest, passesInEveryTimeZone) {
  for (const char* zone : {"UTC", "America/New_York", "Pacific/Apia", "Asia/Kathmandu"}) {
    machine_.calendars.moveTo(zone);
    runSchedulingSuite();
  }
}

TEST_F(SchedulingSuiteDeathTest, asksForHalfPastNineAndHalfPastTwo) {
  std::vector<std::pair<int, int>> times;
  SchedulingFunctions noted = right();
  noted.rule = [&](Instant after, int hour, int minute, const std::vector<int>& days, const Calendar& calendar) {
    times.emplace_back(hour, minute);
    return nextSortDate(after, hour, minute, days, calendar);
  };
  runSchedulingSuite(noted);
  const std::pair halfPastNine(9, 30);
  EXPECT_THAT(times, ElementsAre(halfPastNine, halfPastNine, halfPastNine, halfPastNine, std::pair(2, 30)));
}

TEST_F(SchedulingSuiteDeathTest, endsTheProcessOnASearchOnOrAfter) {
  EXPECT_EXIT(runWithSearch(onOrAfter), KilledBySignal(SIGABRT), IsEmpty());
}

TEST_F(SchedulingSuiteDeathTest, endsTheProcessOnASearchWithZeroBasedWeekdays) {
  EXPECT_EXIT(runWithSearch(withWeekdaysFromZero), KilledBySignal(SIGABRT), IsEmpty());
}

TEST_F(SchedulingSuiteDeathTest, endsTheProcessIfNothingIsFoundInAGap) {
  EXPECT_EXIT(runWithSearch(withoutGaps), KilledBySignal(SIGABRT), IsEmpty());
}

TEST_F(SchedulingSuiteDeathTest, endsTheProcessIfNothingIsFoundAtAll) {
  EXPECT_EXIT(runWithSearch(findingNothing), KilledBySignal(SIGABRT), IsEmpty());
}

TEST_F(SchedulingSuiteDeathTest, endsTheProcessOnARuleWithZeroBasedWeekdays) {
  SchedulingFunctions wrong = right();
  wrong.rule = [](Instant after, int hour, int minute, const std::vector<int>& days, const Calendar& calendar) {
    std::vector<int> shifted(days);
    for (int& day : shifted) day = day % 7 + 1;
    return nextSortDate(after, hour, minute, shifted, calendar);
  };
  EXPECT_EXIT(runShowingOutput(wrong), KilledBySignal(SIGABRT), IsEmpty());
}

TEST_F(SchedulingSuiteDeathTest, endsTheProcessIfTheDailySearchIsADayLate) {
  SchedulingFunctions wrong = right();
  // The second search finds the right day, because its reference is then the same late instant.
  wrong.search = [](Instant, const MatchingTime& matching, const Calendar& calendar) {
    return calendar.nextDate(calendar.instant({.year = 2026, .month = 9, .day = 27, .hour = 0}), matching);
  };
  EXPECT_EXIT(runShowingOutput(wrong), KilledBySignal(SIGABRT), IsEmpty());
}

TEST_F(SchedulingSuiteDeathTest, endsTheProcessIfASelectedDayMeansAnother) {
  SchedulingFunctions wrong = right();
  wrong.rule = [](Instant after, int hour, int minute, const std::vector<int>& days, const Calendar& calendar) {
    return nextSortDate(after, hour, minute, days == std::vector<int>{4} ? std::vector<int>{5} : days, calendar);
  };
  EXPECT_EXIT(runShowingOutput(wrong), KilledBySignal(SIGABRT), IsEmpty());
}

// Wrong on one weekday only, so that the suite must ask for each of the seven.
class SchedulingSuiteWeekdayDeathTest : public SchedulingSuiteDeathTest, public testing::WithParamInterface<int> {};

INSTANTIATE_TEST_SUITE_P(Weekday, SchedulingSuiteWeekdayDeathTest, testing::Range(1, 8),
                         testing::PrintToStringParamName());

TEST_P(SchedulingSuiteWeekdayDeathTest, endsTheProcessIfOneWeekdayIsAWeekEarly) {
  SchedulingFunctions wrong = right();
  wrong.rule = [early = GetParam()](Instant after, int hour, int minute, const std::vector<int>& days,
                                    const Calendar& calendar) {
    std::optional<Instant> found = nextSortDate(after, hour, minute, days, calendar);
    if (std::ranges::find(days, early) == days.end()) return found;
    return std::min(found, nextSortDate(after - std::chrono::days(7), hour, minute, {early}, calendar));
  };
  EXPECT_EXIT(runShowingOutput(wrong), KilledBySignal(SIGABRT), IsEmpty());
}

// Of a list of days, the suite checks the earliest only: Monday of the weekdays, Saturday of the weekend.
class SchedulingSuiteSkippedDayDeathTest : public SchedulingSuiteDeathTest, public testing::WithParamInterface<int> {};

INSTANTIATE_TEST_SUITE_P(Weekday, SchedulingSuiteSkippedDayDeathTest, testing::Values(1, 2, 4, 7),
                         testing::PrintToStringParamName());

TEST_P(SchedulingSuiteSkippedDayDeathTest, endsTheProcessIfTheRuleSkipsAWeekday) {
  SchedulingFunctions wrong = right();
  wrong.rule = [skipped = GetParam()](Instant after, int hour, int minute, std::vector<int> days,
                                      const Calendar& calendar) {
    std::erase(days, skipped);
    return nextSortDate(after, hour, minute, days, calendar);
  };
  EXPECT_EXIT(runShowingOutput(wrong), KilledBySignal(SIGABRT), IsEmpty());
}

TEST_F(SchedulingSuiteDeathTest, endsTheProcessIfNoDaysMeanEveryDay) {
  SchedulingFunctions wrong = right();
  wrong.rule = [](Instant after, int hour, int minute, const std::vector<int>& days, const Calendar& calendar) {
    return nextSortDate(after, hour, minute, days.empty() ? std::vector<int>{1, 2, 3, 4, 5, 6, 7} : days, calendar);
  };
  EXPECT_EXIT(runShowingOutput(wrong), KilledBySignal(SIGABRT), IsEmpty());
}

TEST_F(SchedulingSuiteDeathTest, endsTheProcessIfTheFirstListedDayIsTaken) {
  SchedulingFunctions wrong = right();
  wrong.rule = [](Instant after, int hour, int minute, const std::vector<int>& days, const Calendar& calendar) {
    return nextSortDate(after, hour, minute, days.empty() ? days : std::vector<int>{days.front()}, calendar);
  };
  EXPECT_EXIT(runShowingOutput(wrong), KilledBySignal(SIGABRT), IsEmpty());
}

TEST_F(SchedulingSuiteDeathTest, harnessShowsWhatIsPrinted) {
  SchedulingFunctions talkative = right();
  talkative.search = [](Instant, const MatchingTime&, const Calendar&) {
    std::cout << "printed";
    return std::nullopt;
  };
  EXPECT_EXIT(runShowingOutput(talkative), KilledBySignal(SIGABRT), "^printed$");
}

}  // namespace
