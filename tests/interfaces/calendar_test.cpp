// Local time in time zones.
#include "platform/calendar.h"

#include <gtest/gtest.h>

#include <chrono>
#include <memory>
#include <optional>
#include <string>

#include "platform/error.h"
#include "tests/interfaces/differences.h"
#include "tests/interfaces/implementations.h"
#include "tests/support/calendar_text.h"

namespace {

using namespace std::chrono_literals;
using std::chrono::sys_days;

class CalendarTest : public InterfaceTest<Implementation<CalendarsSubject>> {
 protected:
  std::shared_ptr<const Calendar> calendar(const std::string& zone) { return subject_->calendars().inTimeZone(zone); }

  const std::unique_ptr<CalendarsSubject> subject_ = GetParam().make();
};

INSTANTIATE_TEST_SUITE_P(Implementations, CalendarTest, testing::ValuesIn(calendars()), implementationName);

TEST_P(CalendarTest, hasTheComponentsOfAnInstant) {
  const Instant instant = sys_days(2026y / 3 / 8) + 7h + 5min + 9s + 999ms;
  EXPECT_EQ(shown(calendar("UTC")->components(instant)), "2026-03-08 07:05:09 day 1");
  EXPECT_EQ(shown(calendar("America/New_York")->components(instant)), "2026-03-08 03:05:09 day 1");
  EXPECT_EQ(shown(calendar("Pacific/Apia")->components(sys_days(2011y / 12 / 30) + 9h)), "2011-12-29 23:00:00 day 5");
  EXPECT_EQ(shown(calendar("Pacific/Apia")->components(sys_days(2011y / 12 / 30) + 10h)), "2011-12-31 00:00:00 day 7");
  EXPECT_EQ(shown(calendar("UTC")->components(sys_days(1969y / 12 / 31) + 23h + 59min + 59s + 500ms)),
            "1969-12-31 23:59:59 day 4");
}

TEST_P(CalendarTest, numbersTheWeekFromSunday) {
  for (int day = 1; day <= 7; ++day)
    EXPECT_EQ(calendar("UTC")->components(sys_days(2026y / 9 / 19) + std::chrono::days(day)).weekday, day);
}

TEST_P(CalendarTest, makesInstantsOfFullHours) {
  const auto newYork = calendar("America/New_York");
  EXPECT_EQ(newYork->instant({2026, 1, 15, 12, 34, 56, 1}), sys_days(2026y / 1 / 15) + 17h);
  EXPECT_EQ(newYork->instant({2026, 3, 8, 2}), sys_days(2026y / 3 / 8) + 7h)
      << "a skipped hour begins at the end of the gap";
  EXPECT_EQ(newYork->instant({2026, 11, 1, 1}), sys_days(2026y / 11 / 1) + 5h)
      << "a repeated hour begins with its first occurrence";
}

TEST_P(CalendarTest, returnsOnlyLaterInstants) {
  const auto utc = calendar("UTC");
  const Instant match = sys_days(2026y / 9 / 26) + 9h + 30min;  // a Saturday
  EXPECT_EQ(utc->nextDate(match, {7, 9, 30}), match + 7 * 24h);
  EXPECT_EQ(utc->nextDate(match, {std::nullopt, 9, 30}), match + 24h);
  EXPECT_EQ(utc->nextDate(match - 1us, {7, 9, 30}), match);
  EXPECT_EQ(utc->nextDate(match + 1us, {7, 9, 30}), match + 7 * 24h);
  EXPECT_EQ(next(*utc, sys_days(2026y / 9 / 26) + 23h + 59min + 30s, {7, 23, 59}), "2026-10-03 23:59:00 day 7");
}

TEST_P(CalendarTest, returnsTheEndOfAGapOnThatDay) {
  EXPECT_EQ(next(*calendar("America/New_York"), sys_days(2026y / 3 / 8) + 5h, {1, 2, 30}), "2026-03-08 03:00:00 day 1");
}

TEST_P(CalendarTest, returnsOnlyTheFirstOfTwoEqualTimes) {
  const auto newYork = calendar("America/New_York");
  const Instant first = sys_days(2026y / 11 / 1) + 5h + 30min;
  EXPECT_EQ(newYork->nextDate(first - 1s, {1, 1, 30}), first);
  EXPECT_EQ(next(*newYork, first, {1, 1, 30}), "2026-11-08 01:30:00 day 1");
  EXPECT_EQ(next(*newYork, first + 30min, {std::nullopt, 1, 30}), "2026-11-02 01:30:00 day 2");
}

TEST_P(CalendarTest, findsNothingForAnImpossibleHour) {
  for (const int hour : {-1, 24})
    EXPECT_EQ(next(*calendar("UTC"), sys_days(2026y / 9 / 26), {7, hour, 0}), "none") << hour;
}

TEST_P(CalendarTest, findsNothingForAnImpossibleMinute) {
  for (const int minute : {-1, 60, 75})
    EXPECT_EQ(next(*calendar("UTC"), Instant(), {std::nullopt, 9, minute}), "none") << minute;
}

TEST_P(CalendarTest, refusesAnUnknownZone) {
  for (const char* name : {"Mars/Olympus_Mons", "", "../../../etc/hostname"}) {
    try {
      calendar(name);
      ADD_FAILURE() << name;
    } catch (const Error& error) {
      EXPECT_EQ(error.description(),
                "The time zone “" + std::string(name) + "” couldn’t be used because the system doesn’t know it.");
    }
  }
}

TEST_P(CalendarTest, hasTheComponentsOfAnyCentury) {
  EXPECT_EQ(shown(calendar("UTC")->components(sys_days(2446y / 5 / 10) + 22h)), "2446-05-10 22:00:00 day 5");
  EXPECT_EQ(shown(calendar("UTC")->components(sys_days(1600y / 1 / 1))), "1600-01-01 00:00:00 day 7");
}

Instant july() { return sys_days(2026y / 7 / 1) + 12h; }

TEST_P(CalendarTest, isInTheZoneThatTheSystemHasAtTheCall) {
  subject_->moveTo("America/New_York");
  EXPECT_EQ(shown(subject_->calendars().current()->components(july())), "2026-07-01 08:00:00 day 4");
  subject_->moveTo("Asia/Tokyo");
  EXPECT_EQ(shown(subject_->calendars().current()->components(july())), "2026-07-01 21:00:00 day 4");
}

TEST_P(CalendarTest, keepsItsZoneAfterTheNextCall) {
  subject_->moveTo("America/New_York");
  const auto before = subject_->calendars().current();
  subject_->moveTo("Asia/Tokyo");
  EXPECT_NE(subject_->calendars().current(), before);
  EXPECT_EQ(shown(before->components(july())), "2026-07-01 08:00:00 day 4");
}

}  // namespace
