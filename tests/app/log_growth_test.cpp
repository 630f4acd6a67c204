// At login, standard output is a log file that nothing rotates, so only sorts may print to it.
#include <gtest/gtest.h>

#include <chrono>
#include <string>

#include "tests/support/controller_test.h"

namespace {

using namespace std::chrono_literals;

constexpr auto year = 365 * 24h;
constexpr std::size_t longestReport = 500;  // bytes, with the hint and the paths

class LogGrowth : public ControllerTest {
 protected:
  LogGrowth() {
    launch();
    storeDaily(9, 30);
    controller_->scheduleDaily();
  }

  const std::string& printed() const { return machine_.output.text(); }
  std::size_t reports(const std::string& title) const {
    std::size_t count = 0;
    for (std::size_t place = printed().find(title); place != std::string::npos;
         place = printed().find(title, place + 1))
      ++count;
    return count;
  }
};

TEST_F(LogGrowth, printsOneReportInAYearWithOneSort) {
  machine_.loop.advance(year);
  EXPECT_EQ(sorts(), 1);
  EXPECT_EQ(reports("Bookmarks sorted"), 1U);
  EXPECT_LT(printed().size(), longestReport);
}

TEST_F(LogGrowth, printsOneReportADayIfEverySortFails) {
  machine_.files.put(bookmarks, "damaged");
  machine_.loop.advance(year);
  EXPECT_EQ(reports("Bookmarks could not be sorted"), 365U);
  EXPECT_LT(printed().size(), 365 * longestReport);
}

TEST_F(LogGrowth, printsNothingIfSafariQuitsWithAllInOrder) {
  machine_.loop.advance(24h);
  const std::size_t before = printed().size();
  for (int time = 0; time < 1000; ++time) {
    startSafari();
    machine_.applications.end(safari);
    machine_.loop.advance(2s);
  }
  EXPECT_EQ(printed().size(), before);
  EXPECT_EQ(sorts(), 1);
}

}  // namespace
