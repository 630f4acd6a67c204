// The self-test in the built menu-bar program.
#include <gtest/gtest.h>

#include <cctype>
#include <optional>
#include <string>
#include <tuple>

#include "tests/support/program.h"

namespace {

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

TEST(SelfTest, runsIfTheArgumentIsAtAnyPosition) {
  expectPass(run(QUILLERY_EXECUTABLE, {"--login", "--self-test"}));
  expectPass(run(QUILLERY_EXECUTABLE, {"--self-test", "--login"}));
}

TEST(SelfTest, needsNeitherAHomeFolderNorABus) {
  expectPass(run(QUILLERY_EXECUTABLE, {"--self-test"},
                 {{"HOME", "/nonexistent"}, {"DBUS_SESSION_BUS_ADDRESS", "unix:path=/nonexistent"}, {"LANG", "xx"}}));
}

}  // namespace
