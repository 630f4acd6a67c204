// Local time in time zones of the system's files.
#include "platform/linux/civil_calendar.h"

#include <gtest/gtest.h>
#include <sys/mount.h>
#include <sys/stat.h>

#include <chrono>
#include <ctime>
#include <filesystem>
#include <string>
#include <utility>

#include "platform/error.h"
#include "tests/platform/linux/separate_mounts.h"
#include "tests/support/calendar_text.h"
#include "tests/support/child_process.h"
#include "tests/support/environment_scope.h"
#include "tests/support/scratch_folder.h"

namespace {

using namespace std::chrono_literals;
using std::chrono::sys_days;

std::shared_ptr<const Calendar> calendar(const std::string& zone) { return CivilCalendars().inTimeZone(zone); }

TEST(CivilCalendar, returnsTheEndOfAnUnusualGap) {
  EXPECT_EQ(next(*calendar("Australia/Lord_Howe"), sys_days(2026y / 10 / 3), {1, 2, 10}), "2026-10-04 02:30:00 day 1")
      << "a gap of half an hour";
  EXPECT_EQ(next(*calendar("America/Sao_Paulo"), sys_days(2018y / 11 / 3), {1, 0, 15}), "2018-11-04 01:00:00 day 1")
      << "a gap that begins at midnight";
  EXPECT_EQ(next(*calendar("America/Scoresbysund"), sys_days(2024y / 3 / 30), {7, 23, 30}),
            "2024-03-30 23:30:00 day 7");
}

TEST(CivilCalendar, skipsADayThatTheZoneLeftOut) {
  const auto apia = calendar("Pacific/Apia");  // had no Friday 2011-12-30
  const Instant thursday = sys_days(2011y / 12 / 29) + 20h;
  EXPECT_EQ(next(*apia, thursday, {6, 12, 0}), "2012-01-06 12:00:00 day 6");
  EXPECT_EQ(next(*apia, thursday, {std::nullopt, 6, 0}), "2011-12-31 06:00:00 day 7");
  EXPECT_EQ(next(*apia, sys_days(2011y / 12 / 24) + 6h, {6, 12, 0}), "2012-01-06 12:00:00 day 6")
      << "this week's Friday is over and next week's does not exist";
}

TEST(CivilCalendar, findsNothingForAnImpossibleWeekday) {
  EXPECT_EQ(next(*calendar("UTC"), sys_days(2026y / 9 / 26), {8, 9, 30}), "none");
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
