#include "platform/linux/session/termination_signals.h"

#include <gtest/gtest.h>

#include <csignal>

#include "tests/platform/linux/session/poll_loop.h"

namespace {

class TerminationSignalsTest : public testing::TestWithParam<int> {
 protected:
  PollLoop loop_;
  int received_ = 0;
};

TEST_P(TerminationSignalsTest, reportsSeveralSignalsOnceFromTheLoop) {
  const TerminationSignals signals(loop_, [this] { ++received_; });
  for (int count = 0; count < 3; ++count) EXPECT_EQ(std::raise(GetParam()), 0);
  EXPECT_EQ(received_, 0) << "only the loop calls the handler";
  EXPECT_TRUE(loop_.runUntil([this] { return received_ > 0; }));
  bool isLater = false;
  loop_.post([&] { loop_.post([&] { isLater = true; }); });
  EXPECT_TRUE(loop_.runUntil([&] { return isLater; }));
  EXPECT_EQ(received_, 1);
  EXPECT_EQ(std::raise(GetParam()), 0);
  EXPECT_TRUE(loop_.runUntil([this] { return received_ == 2; }));
}

TEST_P(TerminationSignalsTest, restoresTheHandlersBefore) {
  const auto before = std::signal(GetParam(), SIG_IGN);
  {
    const TerminationSignals signals(loop_, [] {});
  }
  EXPECT_EQ(std::signal(GetParam(), before), SIG_IGN);
}

INSTANTIATE_TEST_SUITE_P(OfEachSignal, TerminationSignalsTest, testing::Values(SIGTERM, SIGINT));

}  // namespace
