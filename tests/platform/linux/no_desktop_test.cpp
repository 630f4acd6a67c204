// The built menu-bar program without a desktop.
#include <gtest/gtest.h>

#include <optional>
#include <string>

#include "tests/support/program.h"
#include "tests/support/session_bus.h"

namespace {

const Environment noDesktop = {
    {"DISPLAY", std::nullopt}, {"WAYLAND_DISPLAY", std::nullopt}, {"QT_QPA_PLATFORM", std::nullopt}};

TEST(NoDesktop, isReported) {
  const Ending ending = run(QUILLERY_EXECUTABLE, {}, noDesktop);
  EXPECT_EQ(ending.output, "");
  EXPECT_EQ(ending.status, 1);
  EXPECT_EQ(ending.error, "quillery: There is no desktop to run on: neither DISPLAY nor WAYLAND_DISPLAY is set.\n");
}

TEST(NoDesktop, isReportedInOneLineIfTheDisplayCannotBeReached) {
  Environment environment = noDesktop;
  environment["DISPLAY"] = ":9\n87";
  const Ending ending = run(QUILLERY_EXECUTABLE, {}, environment);
  EXPECT_EQ(ending.output, "");
  EXPECT_EQ(ending.status, 1);
  EXPECT_EQ(ending.error, "quillery: The display couldn’t be reached (DISPLAY is “:9\\u{0A}87”).\n");
}

TEST(NoDesktop, isNotNeededForHelpVersionAndWrongOptions) {
  EXPECT_EQ(run(QUILLERY_EXECUTABLE, {"--help"}, noDesktop).status, 0);
  EXPECT_EQ(run(QUILLERY_EXECUTABLE, {"--version"}, noDesktop).status, 0);
  EXPECT_EQ(run(QUILLERY_EXECUTABLE, {"--self-testing"}, noDesktop).status, 2);
}

TEST(SelfTestOutput, canBeAPipeThatNobodyReads) {
  Pipe pipe;
  pipe.closeReader();
  EXPECT_EQ(run(QUILLERY_EXECUTABLE, {"--self-test"}, {}, pipe.writer()).status, 0);
}

}  // namespace
