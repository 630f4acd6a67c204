// The built menu-bar program without a desktop.
#include <gtest/gtest.h>

#include <optional>
#include <string>

#include "tests/support/program.h"
#include "tests/support/session_bus.h"

namespace {

TEST(NoDesktop, isReportedForAnArgumentThatOnlyResemblesSelfTest) {
  const Ending ending =
      run(QUILLERY_EXECUTABLE, {"--self-testing"},
          {{"DISPLAY", std::nullopt}, {"WAYLAND_DISPLAY", std::nullopt}, {"QT_QPA_PLATFORM", std::nullopt}});
  EXPECT_EQ(ending.output, "");
  EXPECT_EQ(ending.status, 1);
  EXPECT_EQ(ending.error, "quillery: There is no desktop to run on: neither DISPLAY nor WAYLAND_DISPLAY is set.\n");
}

TEST(SelfTestOutput, canBeAPipeThatNobodyReads) {
  Pipe pipe;
  pipe.closeReader();
  EXPECT_EQ(run(QUILLERY_EXECUTABLE, {"--self-test"}, {}, pipe.writer()).status, 0);
}

}  // namespace
