// Wake-ups on a private bus in place of the system's, with the test's own login manager.
#include <gtest/gtest.h>
#include <systemd/sd-bus.h>

#include <ctime>
#include <optional>
#include <string>

#include "platform/linux/session/session_main_loop.h"
#include "platform/linux/session/session_workspace.h"
#include "tests/platform/linux/session/bus_client.h"
#include "tests/platform/linux/session/poll_loop.h"
#include "tests/support/environment_scope.h"
#include "tests/support/scratch_folder.h"
#include "tests/support/session_bus.h"

namespace {

using namespace std::chrono_literals;

constexpr const char* loginManagerPath = "/org/freedesktop/login1";
constexpr const char* loginManagerInterface = "org.freedesktop.login1.Manager";

void announceSleep(const BusClient& client, bool isAboutToSleep, const char* path = loginManagerPath,
                   const char* interface = loginManagerInterface, const char* signal = "PrepareForSleep") {
  EXPECT_GE(sd_bus_emit_signal(client.bus(), path, interface, signal, "b", isAboutToSleep ? 1 : 0), 0);
  EXPECT_GE(sd_bus_flush(client.bus()), 0);
}

class SessionWakeTest : public testing::Test {
 protected:
  SessionWakeTest() { loginManager_.take("org.freedesktop.login1"); }

  ScratchFolder scratch_;
  SessionBus bus_{scratch_};
  EnvironmentScope address_{"DBUS_SYSTEM_BUS_ADDRESS", bus_.address()};
  BusClient loginManager_{bus_.address()};
  PollLoop loop_;
  SessionMainLoop mainLoop_{loop_};
  SessionWorkspace workspace_{loop_};
  int woken_ = 0;
};

TEST_F(SessionWakeTest, reportsTheEndOfASleep) {
  const Observation observation = workspace_.observeWake([this] { ++woken_; });
  for (int sleep = 1; sleep <= 3; ++sleep) {
    announceSleep(loginManager_, true);
    announceSleep(loginManager_, false);
    EXPECT_EQ(woken_, sleep - 1) << "only the loop reports";
    EXPECT_TRUE(loop_.runUntil([&] { return woken_ == sleep; })) << sleep;
  }
}

TEST_F(SessionWakeTest, ignoresAllOtherSignals) {
  const Observation observation = workspace_.observeWake([this] { ++woken_; });
  announceSleep(loginManager_, true);
  announceSleep(loginManager_, false, "/org/freedesktop/login1/other");
  announceSleep(loginManager_, false, loginManagerPath, "org.freedesktop.login1.Session");
  announceSleep(loginManager_, false, loginManagerPath, loginManagerInterface, "PrepareForShutdown");
  EXPECT_GE(sd_bus_emit_signal(loginManager_.bus(), loginManagerPath, loginManagerInterface, "PrepareForSleep", "s",
                               "not a truth value"),
            0);
  EXPECT_GE(sd_bus_flush(loginManager_.bus()), 0);
  const BusClient stranger(bus_.address());
  announceSleep(stranger, false);
  const BusClient last(bus_.address());  // once the bus has served a later client, it has passed on all of that
  bool isRead = false;
  mainLoop_.after(20ms, [&] { isRead = true; });  // received messages are read before a later timer fires
  EXPECT_TRUE(loop_.runUntil([&] { return isRead; }));
  EXPECT_EQ(woken_, 0);
  announceSleep(loginManager_, false);
  EXPECT_TRUE(loop_.runUntil([&] { return woken_ == 1; }));
}

TEST_F(SessionWakeTest, followsALoginManagerThatStartsLater) {
  loginManager_.release("org.freedesktop.login1");
  const Observation observation = workspace_.observeWake([this] { ++woken_; });
  BusClient next(bus_.address());
  next.take("org.freedesktop.login1");
  announceSleep(next, false);
  EXPECT_TRUE(loop_.runUntil([&] { return woken_ == 1; }));
}

TEST_F(SessionWakeTest, reportsUntilTheObservationEnds) {
  int wokenToo = 0;
  const Observation observation = workspace_.observeWake([this] { ++woken_; });
  Observation another;
  another = workspace_.observeWake([&] {
    ++wokenToo;
    another.reset();
    ++wokenToo;
  });
  announceSleep(loginManager_, false);
  announceSleep(loginManager_, false);
  EXPECT_TRUE(loop_.runUntil([&] { return woken_ == 2 && another == nullptr; }));
  EXPECT_EQ(wokenToo, 2) << "one call, which ran to its end";
}

TEST_F(SessionWakeTest, staysIdleAfterTheBusGoesAway) {
  const Observation observation = workspace_.observeWake([this] { ++woken_; });
  bus_.stop();
  bool isLater = false;
  mainLoop_.after(200ms, [&] { isLater = true; });
  const std::clock_t start = std::clock();
  EXPECT_TRUE(loop_.runUntil([&] { return isLater; }));
  EXPECT_LT(std::clock() - start, CLOCKS_PER_SEC / 10);
  EXPECT_EQ(woken_, 0);
}

TEST_F(SessionWakeTest, reportsNothingWithoutABus) {
  address_.set("unix:path=/nonexistent/bus");
  const Observation observation = workspace_.observeWake([this] { ++woken_; });
  EXPECT_NE(observation, nullptr);
  announceSleep(loginManager_, false);
  bool isLater = false;
  mainLoop_.after(1ms, [&] { isLater = true; });
  EXPECT_TRUE(loop_.runUntil([&] { return isLater; }));
  EXPECT_EQ(woken_, 0);
}

}  // namespace
