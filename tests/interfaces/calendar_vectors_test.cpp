// Calendars against recorded results of Foundation's calendar, in time zones all over the world.
#include <gtest/gtest.h>

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <map>
#include <memory>
#include <optional>
#include <ostream>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "tests/interfaces/differences.h"
#include "tests/interfaces/implementations.h"

namespace {

using namespace std::chrono_literals;
using std::chrono::seconds;
using std::chrono::sys_days;

// How Foundation's result compares with `expected`, which follows this program's own rule.
enum class Agreement {
  same,
  second,  // Foundation finds the second occurrence of a repeated local time
  gap      // near some changes of the clock, Foundation finds a later hour, another weekday or another week
};

struct DateVector {
  std::string zone;
  Instant after;
  MatchingTime matching;
  Instant expected;
  Agreement agreement = Agreement::same;
};

std::ostream& operator<<(std::ostream& stream, const DateVector& row) {
  return stream << row.zone << " after " << std::chrono::system_clock::to_time_t(row.after) << ", day "
                << *row.matching.weekday << " at " << row.matching.hour << ':' << row.matching.minute;
}

Agreement agreementNamed(const std::string& name) {
  static const std::map<std::string, Agreement> names = {
      {"same", Agreement::same}, {"second", Agreement::second}, {"gap", Agreement::gap}};
  return names.at(name);
}

std::vector<DateVector> vectors() {
  std::ifstream file(std::filesystem::path(QUILLERY_TEST_DATA) / "next_dates.tsv");
  std::vector<DateVector> rows;
  for (std::string line; std::getline(file, line);) {
    if (line.starts_with('#')) continue;
    std::istringstream fields(line);
    DateVector row;
    std::int64_t after = 0;
    std::int64_t expected = 0;
    int weekday = 0;
    std::string agreement;
    fields >> row.zone >> after >> weekday >> row.matching.hour >> row.matching.minute >> expected >> agreement;
    EXPECT_TRUE(fields) << line;
    row.after = Instant(seconds(after));
    row.matching.weekday = weekday;
    row.expected = Instant(seconds(expected));
    row.agreement = agreementNamed(agreement);
    rows.push_back(row);
  }
  return rows;
}

class CalendarVectors : public InterfaceTest<Implementation<CalendarsSubject>> {
 protected:
  std::shared_ptr<const Calendar> calendarOf(const DateVector& row) {
    return subject_->calendars().inTimeZone(row.zone);
  }
  void expectAll(Agreement agreement) {
    for (const DateVector& row : vectors()) {
      if (row.agreement != agreement) continue;
      EXPECT_EQ(calendarOf(row)->nextDate(row.after, row.matching), row.expected) << row;
    }
  }

  const std::unique_ptr<CalendarsSubject> subject_ = GetParam().make();
};

INSTANTIATE_TEST_SUITE_P(Implementations, CalendarVectors, testing::ValuesIn(calendars()), implementationName);

TEST_P(CalendarVectors, areFoundWhereFoundationFindsTheSame) { expectAll(Agreement::same); }

TEST_P(CalendarVectors, areFoundAtTheFirstOfTwoEqualTimes) { expectAll(Agreement::second); }

TEST_P(CalendarVectors, areFoundNearUnusualChangesOfTheClock) { expectAll(Agreement::gap); }

TEST_P(CalendarVectors, areTheSameInTheCurrentZone) {
  for (const DateVector& row : vectors()) {
    subject_->moveTo(row.zone);
    EXPECT_EQ(subject_->calendars().current()->nextDate(row.after, row.matching),
              calendarOf(row)->nextDate(row.after, row.matching))
        << row;
  }
}

// What follows does without nextDate.

// Returns the difference between local time and UTC at an instant.
seconds offset(const Calendar& calendar, Instant instant) {
  const DateComponents date = calendar.components(instant);
  const std::chrono::year_month_day day(std::chrono::year(date.year),
                                        std::chrono::month(static_cast<unsigned>(date.month)),
                                        std::chrono::day(static_cast<unsigned>(date.day)));
  const auto local =
      sys_days(day) + std::chrono::hours(date.hour) + std::chrono::minutes(date.minute) + seconds(date.second);
  return std::chrono::round<seconds>(local - instant);
}

bool shows(const Calendar& calendar, Instant instant, const MatchingTime& matching) {
  const DateComponents date = calendar.components(instant);
  return date.weekday == matching.weekday && date.hour == matching.hour && date.minute == matching.minute &&
         date.second == 0;
}

// Returns true if the clock shows the time that a row searches for at an instant between `after` and `expected`.
bool isShownBetween(const Calendar& calendar, const DateVector& row) {
  std::set<seconds> offsets;
  for (Instant instant = row.after - 24h; instant < row.expected + 24h; instant += 1h)
    offsets.insert(offset(calendar, instant));
  const auto time = std::chrono::hours(row.matching.hour) + std::chrono::minutes(row.matching.minute);
  for (Instant day = std::chrono::floor<std::chrono::days>(row.after) - 24h; day < row.expected + 48h; day += 24h)
    for (const seconds difference : offsets) {
      const Instant instant = day + time - difference;
      if (instant > row.after && instant < row.expected && shows(calendar, instant, row.matching)) return true;
    }
  return false;
}

// A change of the difference between local time and UTC.
struct ClockChange {
  Instant instant;
  seconds before;
  seconds after;

  bool isGap() const { return after > before; }
  bool isAnHour() const { return std::abs((after - before).count()) == 3600; }
  bool beginsAtFullHour() const { return (instant.time_since_epoch() + before) % 1h == 0s; }
  bool beginsAtMidnight() const { return (instant.time_since_epoch() + before) % 24h == 0s; }
};

// Returns the change after `start` and not after `end`, which are too close for two; absent if there is none.
std::optional<ClockChange> changeBetween(const Calendar& calendar, Instant start, Instant end) {
  const seconds before = offset(calendar, start);
  const seconds after = offset(calendar, end);
  if (before == after) return std::nullopt;
  while (end - start > 1s) {
    const Instant middle = start + std::chrono::floor<seconds>((end - start) / 2);
    (offset(calendar, middle) == before ? start : end) = middle;
  }
  return ClockChange{end, before, after};
}

// Foundation finds the end of a gap if the gap is an hour long and begins at a full hour.
bool isUsual(const ClockChange& change) { return change.isAnHour() && change.beginsAtFullHour(); }

void expectSame(const Calendar& calendar, const DateVector& row) {
  if (isShownBetween(calendar, row)) {
    // Foundation does not find the second occurrence from the first one itself, or if it is not an hour later.
    const auto change = changeBetween(calendar, row.after - 3h, row.after + 3h);
    EXPECT_TRUE(shows(calendar, row.after, row.matching) || (change && !change->isAnHour())) << row;
  }
  if (!shows(calendar, row.expected, row.matching)) {
    const auto gap = changeBetween(calendar, row.expected - 1s, row.expected);
    EXPECT_TRUE(gap && gap->isGap() && isUsual(*gap)) << row;
  }
}

void expectGap(const Calendar& calendar, const DateVector& row) {
  EXPECT_FALSE(isShownBetween(calendar, row)) << row;
  if (shows(calendar, row.expected, row.matching)) {
    const auto change = changeBetween(calendar, row.after - 2h, row.after + 2h);
    EXPECT_TRUE(change && (!isUsual(*change) || change->beginsAtMidnight())) << row;
  } else {
    const auto gap = changeBetween(calendar, row.expected - 1s, row.expected);
    EXPECT_TRUE(gap && gap->isGap() && !isUsual(*gap)) << row;
  }
}

TEST_P(CalendarVectors, differFromFoundationOnlyWhereTheyState) {
  std::map<Agreement, int> counts;
  for (const DateVector& row : vectors()) {
    ++counts[row.agreement];
    const auto calendar = calendarOf(row);
    switch (row.agreement) {
      case Agreement::same: expectSame(*calendar, row); break;
      case Agreement::second: EXPECT_TRUE(isShownBetween(*calendar, row)) << row; break;
      case Agreement::gap: expectGap(*calendar, row); break;
    }
  }
  EXPECT_EQ(counts[Agreement::same], 1332);
  EXPECT_EQ(counts[Agreement::second], 90);
  EXPECT_EQ(counts[Agreement::gap], 12);
}

}  // namespace
