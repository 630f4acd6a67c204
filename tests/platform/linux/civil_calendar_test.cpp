// Local time in time zones of the system's files.
#include "platform/linux/civil_calendar.h"

#include <gtest/gtest.h>
#include <sys/mount.h>
#include <sys/stat.h>

#include <chrono>
#include <ctime>
#include <filesystem>
#include <iomanip>
#include <sstream>
#include <string>
#include <utility>

#include "platform/error.h"
#include "tests/platform/linux/child_process.h"
#include "tests/platform/linux/environment_scope.h"
#include "tests/platform/linux/scratch_folder.h"

namespace {

using namespace std::chrono_literals;
using std::chrono::sys_days;

Instant seconds(std::int64_t count) { return Instant(std::chrono::seconds(count)); }

std::string shown(const DateComponents& date) {
  std::ostringstream text;
  text << std::setfill('0') << std::setw(4) << date.year << '-' << std::setw(2) << date.month << '-' << std::setw(2)
       << date.day << ' ' << std::setw(2) << date.hour << ':' << std::setw(2) << date.minute << ':' << std::setw(2)
       << date.second << " day " << date.weekday;
  return text.str();
}

std::shared_ptr<const Calendar> calendar(const std::string& zone) { return CivilCalendars().inTimeZone(zone); }

// Returns the local time of the next match; "none" if there is none.
std::string next(const Calendar& calendar, Instant after, const MatchingTime& matching) {
  const auto found = calendar.nextDate(after, matching);
  return found ? shown(calendar.components(*found)) : "none";
}

TEST(CivilCalendar, hasTheComponentsOfAnInstant) {
  const Instant instant = sys_days(2026y / 3 / 8) + 7h + 5min + 9s + 999ms;
  EXPECT_EQ(shown(calendar("UTC")->components(instant)), "2026-03-08 07:05:09 day 1");
  EXPECT_EQ(shown(calendar("America/New_York")->components(instant)), "2026-03-08 03:05:09 day 1");
  EXPECT_EQ(shown(calendar("Pacific/Apia")->components(sys_days(2011y / 12 / 30) + 9h)), "2011-12-29 23:00:00 day 5");
  EXPECT_EQ(shown(calendar("Pacific/Apia")->components(sys_days(2011y / 12 / 30) + 10h)), "2011-12-31 00:00:00 day 7");
  EXPECT_EQ(shown(calendar("UTC")->components(sys_days(1969y / 12 / 31) + 23h + 59min + 59s + 500ms)),
            "1969-12-31 23:59:59 day 4");
}

TEST(CivilCalendar, numbersTheWeekFromSunday) {
  for (int day = 1; day <= 7; ++day)
    EXPECT_EQ(calendar("UTC")->components(sys_days(2026y / 9 / 19) + std::chrono::days(day)).weekday, day);
}

TEST(CivilCalendar, makesInstantsOfFullHours) {
  const auto newYork = calendar("America/New_York");
  EXPECT_EQ(newYork->instant({2026, 1, 15, 12, 34, 56, 1}), sys_days(2026y / 1 / 15) + 17h);
  EXPECT_EQ(newYork->instant({2026, 3, 8, 2}), sys_days(2026y / 3 / 8) + 7h)
      << "a skipped hour begins at the end of the gap";
  EXPECT_EQ(newYork->instant({2026, 11, 1, 1}), sys_days(2026y / 11 / 1) + 5h)
      << "a repeated hour begins with its first occurrence";
}

TEST(CivilCalendar, returnsOnlyLaterInstants) {
  const auto utc = calendar("UTC");
  const Instant match = sys_days(2026y / 9 / 26) + 9h + 30min;  // a Saturday
  EXPECT_EQ(utc->nextDate(match, {7, 9, 30}), match + 7 * 24h);
  EXPECT_EQ(utc->nextDate(match, {std::nullopt, 9, 30}), match + 24h);
  EXPECT_EQ(utc->nextDate(match - 1us, {7, 9, 30}), match);
  EXPECT_EQ(utc->nextDate(match + 1us, {7, 9, 30}), match + 7 * 24h);
  EXPECT_EQ(next(*utc, sys_days(2026y / 9 / 26) + 23h + 59min + 30s, {7, 23, 59}), "2026-10-03 23:59:00 day 7");
}

TEST(CivilCalendar, returnsTheEndOfAGapOnThatDay) {
  EXPECT_EQ(next(*calendar("America/New_York"), sys_days(2026y / 3 / 8) + 5h, {1, 2, 30}), "2026-03-08 03:00:00 day 1");
  EXPECT_EQ(next(*calendar("Australia/Lord_Howe"), sys_days(2026y / 10 / 3), {1, 2, 10}), "2026-10-04 02:30:00 day 1")
      << "a gap of half an hour";
  EXPECT_EQ(next(*calendar("America/Sao_Paulo"), sys_days(2018y / 11 / 3), {1, 0, 15}), "2018-11-04 01:00:00 day 1")
      << "a gap that begins at midnight";
  EXPECT_EQ(next(*calendar("America/Scoresbysund"), sys_days(2024y / 3 / 30), {7, 23, 30}),
            "2024-03-30 23:30:00 day 7");
}

TEST(CivilCalendar, returnsOnlyTheFirstOfTwoEqualTimes) {
  const auto newYork = calendar("America/New_York");
  const Instant first = sys_days(2026y / 11 / 1) + 5h + 30min;
  EXPECT_EQ(newYork->nextDate(first - 1s, {1, 1, 30}), first);
  EXPECT_EQ(next(*newYork, first, {1, 1, 30}), "2026-11-08 01:30:00 day 1");
  EXPECT_EQ(next(*newYork, first + 30min, {std::nullopt, 1, 30}), "2026-11-02 01:30:00 day 2");
}

TEST(CivilCalendar, skipsADayThatTheZoneLeftOut) {
  const auto apia = calendar("Pacific/Apia");  // had no Friday 2011-12-30
  const Instant thursday = sys_days(2011y / 12 / 29) + 20h;
  EXPECT_EQ(next(*apia, thursday, {6, 12, 0}), "2012-01-06 12:00:00 day 6");
  EXPECT_EQ(next(*apia, thursday, {std::nullopt, 6, 0}), "2011-12-31 06:00:00 day 7");
  EXPECT_EQ(next(*apia, sys_days(2011y / 12 / 24) + 6h, {6, 12, 0}), "2012-01-06 12:00:00 day 6")
      << "this week's Friday is over and next week's does not exist";
}

TEST(CivilCalendar, findsNothingForAnImpossibleHourOrWeekday) {
  EXPECT_EQ(next(*calendar("UTC"), sys_days(2026y / 9 / 26), {7, 24, 0}), "none");
  EXPECT_EQ(next(*calendar("UTC"), sys_days(2026y / 9 / 26), {8, 9, 30}), "none");
}

TEST(CivilCalendar, findsNothingForAnImpossibleMinute) {
  for (const int minute : {-1, 60, 75})
    EXPECT_EQ(next(*calendar("UTC"), seconds(0), {std::nullopt, 9, minute}), "none") << minute;
}

TEST(CivilCalendars, refuseAnUnknownZone) {
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

// The current zone

Instant july() { return sys_days(2026y / 7 / 1) + 12h; }

std::string hourNow() { return std::to_string(CivilCalendars().current()->components(july()).hour); }

TEST(CurrentCalendar, readsTheVariableInEveryCall) {
  EnvironmentScope zone("TZ", "America/New_York");
  EXPECT_EQ(hourNow(), "8");
  zone.set(":Asia/Tokyo");
  EXPECT_EQ(hourNow(), "21");
  zone.set("/usr/share/zoneinfo/Europe/Berlin");
  EXPECT_EQ(hourNow(), "14");
  for (const char* utc : {"", ":", "UTC", "UTC0", "No/Such_Zone"}) {
    zone.set(utc);
    EXPECT_EQ(hourNow(), "12") << utc;
  }
}

TEST(CurrentCalendar, followsRulesInTheVariable) {
  EnvironmentScope zone("TZ", "CET-1CEST,M3.5.0,M10.5.0/3");
  EXPECT_EQ(hourNow(), "14");
  const auto rules = CivilCalendars().current();
  EXPECT_EQ(next(*rules, sys_days(2026y / 3 / 29), {1, 2, 30}), "2026-03-29 03:00:00 day 1") << "a gap";
  EXPECT_EQ(rules->nextDate(sys_days(2026y / 10 / 24) + 23h, {1, 2, 30}), sys_days(2026y / 10 / 25) + 30min)
      << "the first of two";
  EXPECT_EQ(rules->instant({2026, 3, 29, 2}), sys_days(2026y / 3 / 29) + 1h);
  for (const auto& [text, hour] : {std::pair("JST-9", "21"),
                                   {"<+03>-3", "15"},
                                   {"EST5EDT,M3.2.0,M11.1.0", "8"},
                                   {":CET-1CEST,M3.5.0,M10.5.0/3", "14"},
                                   {"NZST-12NZDT,M9.5.0,M4.1.0/3", "0"}}) {
    zone.set(text);
    EXPECT_EQ(hourNow(), hour) << text;
  }
}

TEST(CurrentCalendar, doesNotWaitForAPipeInPlaceOfAZone) {
  const ScratchFolder scratch;
  ASSERT_EQ(mkfifo(scratch.path("zone").c_str(), 0600), 0);
  EnvironmentScope zone("TZ", scratch.path("zone"));
  EXPECT_EQ(hourNow(), "12");
  const EnvironmentScope folder("TZDIR", scratch.path());
  zone.set(":zone");
  EXPECT_EQ(hourNow(), "12");
}

TEST(CurrentCalendar, hasTheComponentsOfAnyCentury) {
  const EnvironmentScope zone("TZ", "UTC");
  EXPECT_EQ(shown(CivilCalendars().current()->components(sys_days(2446y / 5 / 10) + 22h)), "2446-05-10 22:00:00 day 5");
  EXPECT_EQ(shown(CivilCalendars().current()->components(sys_days(1600y / 1 / 1))), "1600-01-01 00:00:00 day 7");
}

TEST(CurrentCalendar, usesTheSystemsZoneIfTheVariableIsUnset) {
  const EnvironmentScope zone("TZ", std::nullopt);
  tzset();
  for (const Instant instant : {july(), july() + 24h * 183}) {
    const std::time_t time = std::chrono::system_clock::to_time_t(instant);
    std::tm local{};
    localtime_r(&time, &local);
    const DateComponents found = CivilCalendars().current()->components(instant);
    EXPECT_EQ(shown(found), shown({local.tm_year + 1900, local.tm_mon + 1, local.tm_mday, local.tm_hour, local.tm_min,
                                   local.tm_sec, local.tm_wday + 1}));
  }
}

TEST(CurrentCalendar, noticesThatTheSystemsZoneChanged) {
  const EnvironmentScope zone("TZ", std::nullopt);
  const std::string hours = inChildProcess([]() -> std::string {
    if (const std::string problem = separateMounts(); !problem.empty()) return "no: " + problem;
    if (mount("none", "/etc", "tmpfs", 0, "size=1m") != 0) return "no: /etc cannot be mounted";
    std::string seen = hourNow();
    for (const char* place : {"/usr/share/zoneinfo/Asia/Tokyo", "../usr/share/zoneinfo/America/New_York"}) {
      std::filesystem::remove("/etc/localtime");
      std::filesystem::create_symlink(place, "/etc/localtime");
      seen += " " + hourNow();
    }
    std::filesystem::remove("/etc/localtime");
    std::filesystem::copy_file("/usr/share/zoneinfo/Europe/Berlin", "/etc/localtime");
    return seen + " " + hourNow();
  });
  if (hours.starts_with("no: ")) GTEST_SKIP() << hours;
  EXPECT_EQ(hours, "12 21 8 14") << "without a file, with two links and with a copy";
}

}  // namespace
