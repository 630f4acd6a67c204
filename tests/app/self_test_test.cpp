// The self-test: as the built program runs it, and with a platform that is wrong.
#include "app/self_test.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <csignal>
#include <iostream>
#include <string>

#include "tests/support/altered_platforms.h"
#include "tests/support/program.h"
#include "tests/support/virtual_machine.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::KilledBySignal;

const std::string bothLines =
    "PASS: daily, weekdays, weekends, selected days, empty selection and daylight-saving gap\n"
    "PASS: recursive sort, folders first, natural names, Reading List preserved, idempotence\n";

void expectPass(const Ending& ending) {
  EXPECT_EQ(ending.status, 0);
  EXPECT_EQ(ending.output, bothLines);
  EXPECT_EQ(ending.error, "");
}

class SelfTestInPlaces : public testing::TestWithParam<std::tuple<const char*, const char*>> {};

TEST_P(SelfTestInPlaces, printsTheSameTwoLinesAndSucceeds) {
  const auto& [language, zone] = GetParam();
  expectPass(run(QUILLERY_EXECUTABLE, {"--self-test"},
                 {{"LANG", language}, {"LC_ALL", std::nullopt}, {"LC_COLLATE", std::nullopt}, {"TZ", zone}}));
}

INSTANTIATE_TEST_SUITE_P(LanguagesAndZones, SelfTestInPlaces,
                         testing::Combine(testing::Values("C", "tr_TR.UTF-8", "sv_SE.UTF-8", "de_DE.UTF-8"),
                                          testing::Values("UTC", "America/New_York", "Pacific/Apia")),
                         [](const auto& place) {
                           std::string name = std::string(std::get<0>(place.param)) + "_" + std::get<1>(place.param);
                           for (char& character : name)
                             if (std::isalnum(static_cast<unsigned char>(character)) == 0) character = '_';
                           return name;
                         });

TEST(SelfTest, isAskedForAtAnyPosition) {
  expectPass(run(QUILLERY_EXECUTABLE, {"--login", "--self-test"}));
  expectPass(run(QUILLERY_EXECUTABLE, {"--self-test", "--login"}));
}

TEST(SelfTest, needsNeitherAHomeNorABus) {
  expectPass(run(QUILLERY_EXECUTABLE, {"--self-test"},
                 {{"HOME", "/nonexistent"}, {"DBUS_SESSION_BUS_ADDRESS", "unix:path=/nonexistent"}, {"LANG", "xx"}}));
}

class SelfTestDeathTest : public testing::Test {
 protected:
  // Runs the self-test on an altered platform in a process of its own, whose standard output is seen on standard error.
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

TEST_F(SelfTestDeathTest, diesSilentlyOfACaseSensitiveOrder) {
  CaseSensitiveCollation collation;
  EXPECT_EXIT(runWith<Collation>(collation), KilledBySignal(SIGABRT), IsEmpty());
}

TEST_F(SelfTestDeathTest, diesSilentlyOfASearchOnOrAfter) {
  AlteredCalendars calendars(machine_.calendars, onOrAfter);
  EXPECT_EXIT(runWith<Calendars>(calendars), KilledBySignal(SIGABRT), IsEmpty()) << "nor is the other line printed";
}

TEST_F(SelfTestDeathTest, diesSilentlyOfWeekdaysFromZero) {
  AlteredCalendars calendars(machine_.calendars, withWeekdaysFromZero);
  EXPECT_EXIT(runWith<Calendars>(calendars), KilledBySignal(SIGABRT), IsEmpty());
}

TEST_F(SelfTestDeathTest, diesSilentlyOfAPlatformThatCannotAnswer) {
  AlteredCalendars calendars(machine_.calendars, [](const Calendar&, Instant, MatchingTime) -> std::optional<Instant> {
    throw Error("Test", 1, "no calendar");
  });
  EXPECT_EXIT(runWith<Calendars>(calendars), KilledBySignal(SIGABRT), IsEmpty());
}

}  // namespace
