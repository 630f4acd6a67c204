// Quit requests to real processes on a real session bus.
#include "platform/linux/quit_request.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <systemd/sd-bus.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/linux/session_bus_applications.h"
#include "tests/support/bus_application.h"
#include "tests/support/child_process.h"
#include "tests/support/environment_scope.h"
#include "tests/support/scratch_folder.h"
#include "tests/support/session_bus.h"

namespace {

using testing::SizeIs;
using namespace std::chrono_literals;

constexpr const char* safari = "com.apple.Safari";
constexpr const char* safariPath = "/com/apple/Safari";
constexpr auto ample = 60s;  // enough on a busy machine
constexpr auto soon = 2s;

using Actions = std::vector<std::string>;

// An application with both interfaces of GLib, which quits when its action is activated.
Manners wellBehaved() { return {.actions = Actions{"about", "quit"}, .onActivation = OnActivation::quits}; }

class QuitRequestTest : public testing::Test {
 protected:
  ScratchFolder scratch_;
  SessionBus bus_{scratch_};
  EnvironmentScope address_{"DBUS_SESSION_BUS_ADDRESS", bus_.address()};

  static std::vector<std::shared_ptr<RunningApplication>> running(const std::string& identifier = safari,
                                                                  std::chrono::microseconds timeout = ample) {
    return SessionBusApplications(timeout).withBundleIdentifier(identifier);
  }

  // Requests the only running process to quit.
  static bool terminate(std::chrono::microseconds timeout = ample) {
    const auto applications = running(safari, timeout);
    EXPECT_THAT(applications, SizeIs(1));
    return applications.size() == 1 && applications.front()->terminate();
  }
};

// With the interface

TEST_F(QuitRequestTest, activatesAListedAction) {
  BusApplication application(safari, safariPath, wellBehaved());
  EXPECT_TRUE(terminate());
  EXPECT_EQ(application.ending(), "quit");
  EXPECT_EQ(application.notes(), "List, activate quit");
}

TEST_F(QuitRequestTest, activatesTheActionIfNoneCanBeListed) {
  BusApplication application(safari, safariPath, {.onActivation = OnActivation::quits});
  EXPECT_TRUE(terminate());
  EXPECT_EQ(application.ending(), "quit");
  EXPECT_EQ(application.notes(), "activate quit");
}

TEST_F(QuitRequestTest, findsTheObjectOfAnIdentifierWithHyphens) {
  const std::string identifier = "com.example.web-browser.Beta2";
  BusApplication application(identifier, "/com/example/web_browser/Beta2", wellBehaved());
  const auto applications = running(identifier);
  ASSERT_THAT(applications, SizeIs(1));
  EXPECT_TRUE(applications.front()->terminate());
  EXPECT_EQ(application.ending(), "quit");
}

TEST_F(QuitRequestTest, isDeliveredIfTheApplicationQuitsWithoutAReply) {
  BusApplication application(safari, safariPath,
                             {.actions = Actions{"quit"}, .onActivation = OnActivation::quitsWithoutAnswer});
  EXPECT_TRUE(terminate());
  EXPECT_EQ(application.ending(), "quit");
  EXPECT_EQ(application.notes(), "List, activate quit");
}

TEST_F(QuitRequestTest, sendsNoSignalIfTheApplicationKeepsRunning) {
  for (const OnActivation reaction : {OnActivation::stays, OnActivation::declines}) {
    BusApplication application(safari, safariPath,
                               {.actions = Actions{"quit"}, .onActivation = reaction, .ignoresSignals = true});
    EXPECT_TRUE(terminate());
    EXPECT_EQ(application.notes(), "List, activate quit");
    EXPECT_TRUE(application.isAnswering());
  }
}

TEST_F(QuitRequestTest, sendsNoSignalIfTheBusForbidsTheCall) {
  BusApplication application(
      safari, safariPath, {.actions = Actions{"quit"}, .onActivation = OnActivation::forbids, .ignoresSignals = true});
  EXPECT_FALSE(terminate());
  EXPECT_EQ(application.notes(), "List, activate quit");
}

// Without the interface

TEST_F(QuitRequestTest, signalsAnApplicationWithoutTheInterface) {
  BusApplication application(safari, safariPath, {});
  EXPECT_TRUE(terminate());
  EXPECT_EQ(application.ending(), "SIGTERM");
}

TEST_F(QuitRequestTest, signalsAnApplicationWithAnotherObjectPath) {
  BusApplication application(safari, "/com/apple/Other", wellBehaved());
  EXPECT_TRUE(terminate());
  EXPECT_EQ(application.ending(), "SIGTERM");
  EXPECT_EQ(application.notes(), "");
}

TEST_F(QuitRequestTest, signalsAnApplicationWithoutTheAction) {
  for (const Actions& actions : {Actions{"about", "quit-all", "app.quit"}, Actions{}}) {
    BusApplication application(safari, safariPath, {.actions = actions, .onActivation = OnActivation::stays});
    EXPECT_TRUE(terminate());
    EXPECT_EQ(application.ending(), "SIGTERM");
    EXPECT_EQ(application.notes(), "List");
  }
}

TEST_F(QuitRequestTest, signalsAnApplicationThatCannotActivateTheAction) {
  BusApplication application(safari, safariPath, {.actions = Actions{"quit"}});
  EXPECT_TRUE(terminate());
  EXPECT_EQ(application.ending(), "SIGTERM");
  EXPECT_EQ(application.notes(), "List");
}

TEST_F(QuitRequestTest, sendsNoStrongerSignalThanSigterm) {
  BusApplication application(safari, safariPath, {.ignoresSignals = true});
  EXPECT_TRUE(terminate());
  EXPECT_EQ(application.notes(), "SIGTERM");
  EXPECT_TRUE(application.isAnswering());
  EXPECT_TRUE(terminate());
  EXPECT_EQ(application.notes(), "SIGTERM");
  EXPECT_TRUE(application.isAnswering());
}

TEST_F(QuitRequestTest, isNotDeliveredToAProcessThatMayNotBeSignalled) {
  if (geteuid() != 0) GTEST_SKIP() << "only the superuser can create processes of two users";
  BusApplication application(safari, safariPath, {.ignoresSignals = true});
  EXPECT_EQ(inUnprivilegedProcess([] {
              const auto applications = running();
              if (applications.size() != 1) return "there are " + std::to_string(applications.size());
              return std::string(applications.front()->terminate() ? "delivered" : "not delivered");
            }),
            "not delivered");
  EXPECT_EQ(application.notes(), "");
}

// Several processes or connections

TEST_F(QuitRequestTest, activatesTheActionOfEachProcessInTheQueue) {
  BusApplication first(safari, safariPath, wellBehaved());
  BusApplication second(safari, safariPath, wellBehaved());
  const auto applications = running();
  ASSERT_THAT(applications, SizeIs(2));
  EXPECT_EQ(applications[1]->processIdentifier(), second.process());
  EXPECT_TRUE(applications[1]->terminate());
  EXPECT_EQ(second.ending(), "quit");
  EXPECT_EQ(first.notes(), "");
  EXPECT_TRUE(first.isAnswering());
  EXPECT_TRUE(applications[0]->terminate());
  EXPECT_EQ(first.ending(), "quit");
}

TEST_F(QuitRequestTest, signalsEachProcessInTheQueue) {
  BusApplication first(safari, safariPath, {.ignoresSignals = true});
  BusApplication second(safari, safariPath, {.ignoresSignals = true});
  const auto applications = running();
  ASSERT_THAT(applications, SizeIs(2));
  EXPECT_TRUE(applications[1]->terminate());
  EXPECT_EQ(first.notes(), "");
  EXPECT_EQ(second.notes(), "SIGTERM");
  EXPECT_TRUE(applications[0]->terminate());
  EXPECT_EQ(first.notes(), "SIGTERM");
  EXPECT_EQ(second.notes(), "");
}

TEST_F(QuitRequestTest, findsTheConnectionThatHasTheInterface) {
  Manners manners = wellBehaved();
  manners.plainConnections = 2;
  BusApplication application(safari, safariPath, manners);
  EXPECT_TRUE(terminate());
  EXPECT_EQ(application.ending(), "quit");
  EXPECT_EQ(application.notes(), "List, activate quit");
}

TEST_F(QuitRequestTest, signalsAProcessOnceForAllItsConnections) {
  BusApplication application(safari, safariPath, {.ignoresSignals = true, .plainConnections = 2});
  EXPECT_TRUE(terminate());
  EXPECT_EQ(application.notes(), "SIGTERM");
}

// Processes that have ended

TEST_F(QuitRequestTest, isNotDeliveredToAProcessThatHasEnded) {
  BusApplication application(safari, safariPath, wellBehaved());
  const auto applications = running();
  ASSERT_THAT(applications, SizeIs(1));
  application.remove();
  EXPECT_FALSE(applications.front()->terminate());
}

TEST_F(QuitRequestTest, isNotDeliveredToALaterProcess) {
  BusApplication first(safari, safariPath, wellBehaved());
  const auto applications = running();
  ASSERT_THAT(applications, SizeIs(1));
  first.remove();
  BusApplication second(safari, safariPath, wellBehaved());
  EXPECT_FALSE(applications.front()->terminate());
  EXPECT_EQ(second.notes(), "");
}

TEST_F(QuitRequestTest, doesNotSignalAProcessThatHasLeftTheBus) {
  // The bus sees the same as if the process had ended and another one had its ID.
  BusApplication application(safari, safariPath, {.ignoresSignals = true});
  const auto applications = running();
  ASSERT_THAT(applications, SizeIs(1));
  application.leaveBus();
  EXPECT_FALSE(applications.front()->terminate());
  EXPECT_EQ(application.notes(), "");
}

TEST_F(QuitRequestTest, doesNotSignalAProcessThatLeavesTheBusMeanwhile) {
  BusApplication application(safari, safariPath,
                             {.actions = Actions{}, .leavesBusWhenAsked = true, .ignoresSignals = true});
  EXPECT_FALSE(terminate());
  EXPECT_EQ(application.notes(), "List, left the bus");
}

TEST_F(QuitRequestTest, doesNotCallAnotherProcess) {
  BusApplication application(safari, safariPath, wellBehaved());
  BusApplication other("com.example.Other", safariPath, {.ignoresSignals = true});
  // A new bus may reuse a unique name that an old bus gave to another process.
  const BusHandle bus = openSessionBus(Deadline(ample));
  ASSERT_TRUE(bus);
  const auto connections = connectionsOwning(bus.get(), safari, Deadline(ample));
  EXPECT_FALSE(requestQuit({safari, static_cast<std::uint32_t>(other.process()), connections}, ample));
  EXPECT_EQ(application.notes(), "");
  EXPECT_EQ(other.notes(), "");
}

TEST_F(QuitRequestTest, isNotDeliveredWithoutABus) {
  BusApplication application(safari, safariPath, {.ignoresSignals = true});
  const auto applications = running();
  ASSERT_THAT(applications, SizeIs(1));
  bus_.stop();
  EXPECT_FALSE(applications.front()->terminate());
  EXPECT_EQ(application.notes(), "");
}

// Unresponsive applications and buses

class Stopwatch {
 public:
  auto elapsed() const { return std::chrono::steady_clock::now() - start_; }

 private:
  std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
};

TEST_F(QuitRequestTest, isQueuedForAnUnresponsiveApplication) {
  BusApplication application(safari, safariPath, wellBehaved());
  application.suspend();
  const Stopwatch stopwatch;
  EXPECT_TRUE(terminate(soon));
  EXPECT_GE(stopwatch.elapsed(), soon / 4) << "the application had its time to reply";
  EXPECT_LT(stopwatch.elapsed(), 10s) << "the library's own timeout is longer";
  application.resume();
  EXPECT_EQ(application.ending(), "quit");
  EXPECT_EQ(application.notes(), "List, activate quit");
}

TEST_F(QuitRequestTest, doesNotSignalAnUnresponsiveApplication) {
  BusApplication application(safari, safariPath, {.ignoresSignals = true});
  application.suspend();
  EXPECT_TRUE(terminate(soon));
  application.resume();
  EXPECT_TRUE(application.isAnswering());
  EXPECT_EQ(application.notes(), "");
}

TEST_F(QuitRequestTest, isDeliveredIfTheApplicationNeverReplies) {
  for (const std::optional<Actions>& actions : {std::optional<Actions>(), std::optional(Actions{"quit"})}) {
    BusApplication application(
        safari, safariPath, {.actions = actions, .onActivation = OnActivation::stopsAnswering, .ignoresSignals = true});
    const Stopwatch stopwatch;
    EXPECT_TRUE(terminate(soon));
    EXPECT_LT(stopwatch.elapsed(), 10s);
    EXPECT_TRUE(application.isAnswering());
    EXPECT_EQ(application.notes(), actions ? "List, activate quit" : "activate quit");
  }
}

TEST_F(QuitRequestTest, isNotDeliveredByAnUnresponsiveBus) {
  BusApplication application(safari, safariPath, {.ignoresSignals = true});
  const auto applications = running(safari, soon);
  ASSERT_THAT(applications, SizeIs(1));
  kill(bus_.process(), SIGSTOP);
  const Stopwatch stopwatch;
  EXPECT_FALSE(applications.front()->terminate());
  EXPECT_LT(stopwatch.elapsed(), 10s);
  kill(bus_.process(), SIGCONT);
  EXPECT_TRUE(application.isAnswering());
  EXPECT_EQ(application.notes(), "");
}

// Side effects

TEST_F(QuitRequestTest, startsNoApplication) {
  if (!bus_.hasStartedSomething()) GTEST_SKIP() << "this kernel does not list a process's children";
  BusApplication application(safari, safariPath, wellBehaved());
  const auto applications = running();
  ASSERT_THAT(applications, SizeIs(1));
  EXPECT_TRUE(applications.front()->terminate());
  EXPECT_EQ(application.ending(), "quit");
  EXPECT_FALSE(applications.front()->terminate());
  EXPECT_EQ(bus_.hasStartedSomething(), false);
}

TEST_F(QuitRequestTest, worksWithoutTheListThatFoundTheProcess) {
  BusApplication application(safari, safariPath, wellBehaved());
  auto applications = std::make_unique<SessionBusApplications>(ample);
  const auto found = applications->withBundleIdentifier(safari);
  applications.reset();
  ASSERT_THAT(found, SizeIs(1));
  EXPECT_TRUE(found.front()->terminate());
  EXPECT_EQ(application.ending(), "quit");
}

}  // namespace
