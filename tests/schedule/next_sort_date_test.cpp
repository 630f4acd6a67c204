// The next-sort-date rule.
#include "schedule/next_sort_date.h"

#include <gtest/gtest.h>

#include <array>
#include <chrono>
#include <cstdio>
#include <memory>
#include <string>
#include <vector>

#include "tests/support/virtual_machine.h"

namespace {

using namespace std::chrono_literals;

const std::vector<int> weekdays = {2, 3, 4, 5, 6};
const std::vector<int> weekends = {1, 7};
const std::vector<int> everyDay = {1, 2, 3, 4, 5, 6, 7};

class NextSortDateTest : public testing::Test {
 protected:
  // The instant as "2026-09-26 09:30:00" in the calendar's time zone, or "none".
  std::string shown(std::optional<Instant> instant) const {
    if (!instant) return "none";
    const DateComponents date = calendar_->components(*instant);
    std::array<char, 64> text{};
    (void)std::snprintf(text.data(), text.size(), "%04d-%02d-%02d %02d:%02d:%02d", date.year, date.month, date.day,
                        date.hour, date.minute, date.second);
    return text.data();
  }

  Instant at(int month, int day, int hour) const {
    return calendar_->instant({.year = 2026, .month = month, .day = day, .hour = hour});
  }

  std::string next(Instant after, int hour, int minute, const std::vector<int>& days) const {
    return shown(nextSortDate(after, hour, minute, days, *calendar_));
  }

  void moveTo(const std::string& zone) { calendar_ = machine_.calendars.inTimeZone(zone); }

  VirtualMachine machine_;
  std::shared_ptr<const Calendar> calendar_ = machine_.calendars.inTimeZone("UTC");
  Instant saturday_ = at(9, 26, 8);
};

TEST_F(NextSortDateTest, onWeekendsIsLaterTheSameSaturday) {
  EXPECT_EQ(next(saturday_, 9, 30, weekends), "2026-09-26 09:30:00");
}

TEST_F(NextSortDateTest, onWeekdaysIsMonday) { EXPECT_EQ(next(saturday_, 9, 30, weekdays), "2026-09-28 09:30:00"); }

TEST_F(NextSortDateTest, onDayFourIsWednesday) { EXPECT_EQ(next(saturday_, 9, 30, {4}), "2026-09-30 09:30:00"); }

TEST_F(NextSortDateTest, isNoneWithoutDays) { EXPECT_EQ(next(saturday_, 9, 30, {}), "none"); }

TEST_F(NextSortDateTest, isNoneIfEveryDayIsOutOfRange) {
  EXPECT_EQ(next(saturday_, 9, 30, {0, 8, 9}), "none");
  EXPECT_EQ(next(saturday_, 9, 30, {-1, -7, 2147483647, -2147483647 - 1}), "none");
}

TEST_F(NextSortDateTest, ignoresDaysOutOfRange) {
  EXPECT_EQ(next(saturday_, 9, 30, {0, 4}), next(saturday_, 9, 30, {4}));
  EXPECT_EQ(next(saturday_, 9, 30, {8, 4, -3}), next(saturday_, 9, 30, {4}));
}

TEST_F(NextSortDateTest, ignoresTheOrderAndDuplicatesOfDays) {
  EXPECT_EQ(next(saturday_, 9, 30, {6, 2, 2, 4, 6}), next(saturday_, 9, 30, {2, 4, 6}));
}

TEST_F(NextSortDateTest, isStrictlyAfterTheReference) {
  const Instant match = *nextSortDate(saturday_, 9, 30, {7}, *calendar_);
  EXPECT_EQ(next(match, 9, 30, {7}), "2026-10-03 09:30:00");
  EXPECT_EQ(next(match, 9, 30, everyDay), "2026-09-27 09:30:00") << "the same time on the following day";
  EXPECT_EQ(next(match - Instant::duration(1), 9, 30, {7}), "2026-09-26 09:30:00");
}

TEST_F(NextSortDateTest, isTheNextDayOnceTheMinuteHasBegun) {
  const Instant lateOnSaturday = at(9, 26, 23) + 59min + 30s;
  EXPECT_EQ(next(lateOnSaturday, 23, 59, {7}), "2026-10-03 23:59:00");
  EXPECT_EQ(next(lateOnSaturday, 23, 59, everyDay), "2026-09-27 23:59:00");
  EXPECT_EQ(next(lateOnSaturday, 23, 59, weekdays), "2026-09-28 23:59:00");
}

TEST_F(NextSortDateTest, isAtSecondZero) {
  EXPECT_EQ(next(saturday_ + 17s + 250ms, 9, 30, {7}), "2026-09-26 09:30:00");
  const auto found = nextSortDate(saturday_ + 17s + 250ms, 9, 30, {7}, *calendar_);
  EXPECT_EQ(found->time_since_epoch() % 60s, 0s);
}

TEST_F(NextSortDateTest, isTheEndOfAGapOnTheSameDay) {
  moveTo("America/New_York");
  const Instant springForward = at(3, 8, 0);
  EXPECT_EQ(next(springForward, 2, 30, {1}), "2026-03-08 03:00:00");
  EXPECT_EQ(nextSortDate(springForward, 2, 30, {1}, *calendar_), springForward + 2h) << "03:00 EDT";
}

TEST_F(NextSortDateTest, isTheFirstOfTwoRepeatedTimes) {
  moveTo("America/New_York");
  const Instant midnight = at(11, 1, 0);
  EXPECT_EQ(nextSortDate(midnight, 1, 30, {1}, *calendar_), midnight + 90min) << "01:30 EDT";
  EXPECT_EQ(next(midnight + 90min, 1, 30, {1}), "2026-11-08 01:30:00") << "not 01:30 EST";
}

TEST_F(NextSortDateTest, usesTheTimeZoneOfTheCalendar) {
  const Instant after = saturday_;
  moveTo("Pacific/Apia");  // the local time is 21:00
  EXPECT_EQ(next(after, 9, 30, weekends), "2026-09-27 09:30:00");
}

TEST_F(NextSortDateTest, usesTheUsersCalendarByDefault) {
  machine_.calendars.moveTo("Pacific/Apia");
  moveTo("Pacific/Apia");
  EXPECT_EQ(shown(nextSortDate(saturday_, 9, 30, weekends)), "2026-09-27 09:30:00");
  machine_.calendars.moveTo("America/New_York");
  moveTo("America/New_York");
  EXPECT_EQ(shown(nextSortDate(saturday_, 9, 30, weekends)), "2026-09-26 09:30:00");
}

// Records the weekdays that it is searched for, and finds nothing on one of them.
class RecordingCalendar : public Calendar {
 public:
  RecordingCalendar(const Calendar& calendar, int missing) : calendar_(calendar), missing_(missing) {}

  DateComponents components(Instant instant) const override { return calendar_.components(instant); }
  Instant instant(const DateComponents& components) const override { return calendar_.instant(components); }
  std::optional<Instant> nextDate(Instant after, const MatchingTime& matching) const override {
    searched_.push_back(matching.weekday.value_or(0));
    return matching.weekday == missing_ ? std::nullopt : calendar_.nextDate(after, matching);
  }
  const std::vector<int>& searched() const { return searched_; }

 private:
  const Calendar& calendar_;
  int missing_;
  mutable std::vector<int> searched_;
};

TEST_F(NextSortDateTest, searchesOnceForEachValidDayInOrder) {
  const RecordingCalendar calendar(*calendar_, 0);
  nextSortDate(saturday_, 9, 30, {0, 6, 2, 9, 2}, calendar);
  EXPECT_EQ(calendar.searched(), (std::vector<int>{6, 2, 2}));
}

TEST_F(NextSortDateTest, doesNotSearchWithoutDays) {
  const RecordingCalendar calendar(*calendar_, 0);
  EXPECT_FALSE(nextSortDate(saturday_, 9, 30, {0, 8}, calendar));
  EXPECT_EQ(calendar.searched(), std::vector<int>());
}

TEST_F(NextSortDateTest, skipsADayWithoutAMatch) {
  const RecordingCalendar calendar(*calendar_, 7);
  EXPECT_EQ(shown(nextSortDate(saturday_, 9, 30, weekends, calendar)), "2026-09-27 09:30:00");
  EXPECT_EQ(shown(nextSortDate(saturday_, 9, 30, {7}, calendar)), "none");
}

}  // namespace
