// Terminations of real processes on a private session bus. To show that something is not reported, the tests wait for
// the report of a marker, another application that ends later: the bus keeps the order.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <ctime>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "platform/linux/session/session_main_loop.h"
#include "platform/linux/session/session_workspace.h"
#include "platform/linux/session/termination_watch.h"
#include "tests/platform/linux/session/bus_client.h"
#include "tests/platform/linux/session/poll_loop.h"
#include "tests/support/environment_scope.h"
#include "tests/support/scratch_folder.h"
#include "tests/support/session_bus.h"

namespace {

using testing::_;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;
using testing::UnorderedElementsAre;
using namespace std::chrono_literals;

constexpr const char* safari = "com.apple.Safari";
constexpr const char* marker = "com.example.Marker";

using Reports = std::vector<std::pair<std::string, int>>;

class SessionTerminationsTest : public testing::Test {
 protected:
  Observation observe(Reports& reports) {
    return workspace_.observeTerminations([&reports](const std::shared_ptr<RunningApplication>& application) {
      ASSERT_NE(application, nullptr);
      EXPECT_FALSE(application->terminate());
      reports.emplace_back(application->bundleIdentifier().value_or("none"), application->processIdentifier());
    });
  }

  // Waits until all earlier events on the bus are reported. Removes the marker's own report.
  void catchUp(Reports& reports) {
    const std::string end = marker + std::to_string(++markers_);
    BusClient().take(end.c_str());
    EXPECT_TRUE(loop_.runUntil([&] {
      return std::any_of(reports.begin(), reports.end(), [&](const auto& entry) { return entry.first == end; });
    }));
    std::erase_if(reports, [](const auto& entry) { return entry.first.starts_with(marker); });
  }

  // Waits until the processes of all connections on the bus are known.
  void learnProcesses(Reports& reports) {
    catchUp(reports);      // after which all requests for processes have been sent
    const BusClient last;  // once the bus has served a later client, it has replied to them
  }

  ScratchFolder scratch_;
  SessionBus bus_{scratch_};
  EnvironmentScope address_{"DBUS_SESSION_BUS_ADDRESS", bus_.address()};
  PollLoop loop_;
  SessionMainLoop mainLoop_{loop_};
  SessionWorkspace workspace_{loop_};
  Reports reports_;
  int markers_ = 0;
};

TEST_F(SessionTerminationsTest, reportsAnApplicationThatRanBefore) {
  NameOwner owner(safari);
  const NameOwner other("com.apple.Mail");
  const int process = owner.process();
  const Observation observation = observe(reports_);
  owner.leave();
  EXPECT_THAT(reports_, IsEmpty()) << "only the loop reports";
  catchUp(reports_);
  EXPECT_THAT(reports_, ElementsAre(Pair(safari, process)));
}

TEST_F(SessionTerminationsTest, reportsAnApplicationThatStartsLater) {
  const Observation observation = observe(reports_);
  NameOwner owner(safari);
  const int process = owner.process();
  learnProcesses(reports_);
  owner.leave();
  catchUp(reports_);
  EXPECT_THAT(reports_, ElementsAre(Pair(safari, process)));
  NameOwner again(safari);
  const int nextProcess = again.process();
  learnProcesses(reports_);
  again.leave();
  catchUp(reports_);
  EXPECT_THAT(reports_, ElementsAre(Pair(safari, process), Pair(safari, nextProcess)));
}

TEST_F(SessionTerminationsTest, reportsQueuedInstancesInAnyOrderOfLeaving) {
  NameOwner first(safari);
  NameOwner second(safari);
  NameOwner third(safari);
  const std::vector<int> processes{first.process(), second.process(), third.process()};
  const Observation observation = observe(reports_);
  third.leave();
  catchUp(reports_);
  EXPECT_THAT(reports_, ElementsAre(Pair(safari, processes[2])));
  first.leave();
  catchUp(reports_);
  second.leave();
  catchUp(reports_);
  EXPECT_THAT(reports_,
              ElementsAre(Pair(safari, processes[2]), Pair(safari, processes[0]), Pair(safari, processes[1])));
}

TEST_F(SessionTerminationsTest, reportsAProcessOnceWithItsLastConnection) {
  NameOwner owner(safari, 3);
  NameOwner other(safari, 2);
  const int process = owner.process();
  const int otherProcess = other.process();
  const Observation observation = observe(reports_);
  owner.leave();
  other.leave();
  catchUp(reports_);
  EXPECT_THAT(reports_, UnorderedElementsAre(Pair(safari, process), Pair(safari, otherProcess)));
}

TEST_F(SessionTerminationsTest, ignoresAClosedConnectionOfAQueuedProcess) {
  const Observation observation = observe(reports_);
  auto owning = std::make_unique<BusClient>();
  owning->take(safari);
  auto alsoOwning = std::make_unique<BusClient>();
  owning->take("com.apple.Mail");
  owning->release(safari);
  alsoOwning->take(safari);
  learnProcesses(reports_);
  owning.reset();
  catchUp(reports_);
  EXPECT_THAT(reports_, ElementsAre(Pair("com.apple.Mail", getpid())));
  alsoOwning.reset();
  catchUp(reports_);
  EXPECT_THAT(reports_, ElementsAre(Pair("com.apple.Mail", getpid()), Pair(safari, getpid())));
}

TEST_F(SessionTerminationsTest, reportsAnApplicationThatReleasedItsName) {
  const Observation observation = observe(reports_);
  auto application = std::make_unique<BusClient>();
  application->take(safari);
  application->release(safari);
  learnProcesses(reports_);
  EXPECT_THAT(reports_, IsEmpty());
  application.reset();
  catchUp(reports_);
  EXPECT_THAT(reports_, ElementsAre(Pair(safari, getpid())));
}

TEST_F(SessionTerminationsTest, reportsNoProcessForAShortLivedApplication) {
  const Observation observation = observe(reports_);
  { BusClient().take(safari); }
  catchUp(reports_);
  EXPECT_THAT(reports_, ElementsAre(Pair(safari, -1)));
}

TEST_F(SessionTerminationsTest, reportsEachNameOfAnApplication) {
  auto application = std::make_unique<BusClient>();
  application->take(safari);
  application->take("org.freedesktop.Example");
  const Observation observation = observe(reports_);
  application->take("com.apple.Mail");
  application.reset();
  catchUp(reports_);
  EXPECT_THAT(reports_, UnorderedElementsAre(Pair(safari, getpid()), Pair("com.apple.Mail", getpid()),
                                             Pair("org.freedesktop.Example", getpid())));
}

TEST_F(SessionTerminationsTest, ignoresConnectionsWithoutAName) {
  { const BusClient before; }
  const Observation observation = observe(reports_);
  { const BusClient after; }
  catchUp(reports_);
  EXPECT_THAT(reports_, IsEmpty());
}

TEST_F(SessionTerminationsTest, reportsToEachObserverUntilItsObservationEnds) {
  Reports otherReports;
  const Observation observation = observe(reports_);
  Observation another = observe(otherReports);
  { BusClient().take(safari); }
  catchUp(reports_);
  catchUp(otherReports);
  EXPECT_THAT(reports_, Contains(Pair(safari, _)));
  EXPECT_THAT(otherReports, Contains(Pair(safari, _)));
  another.reset();
  otherReports.clear();
  reports_.clear();
  { BusClient().take(safari); }
  catchUp(reports_);
  EXPECT_THAT(reports_, ElementsAre(Pair(safari, _)));
  EXPECT_THAT(otherReports, IsEmpty());
}

TEST_F(SessionTerminationsTest, dropsPendingReportsOfAnEndedObservation) {
  Reports otherReports;
  const Observation observation = observe(reports_);
  Observation another;
  another = workspace_.observeTerminations([&](const std::shared_ptr<RunningApplication>& application) {
    otherReports.emplace_back(*application->bundleIdentifier(), 0);
    another.reset();  // destroys the handler while it runs
    otherReports.emplace_back("handler", 0);
  });
  {
    BusClient application;
    application.take(safari);
    application.take("com.apple.Mail");
  }
  catchUp(reports_);
  EXPECT_EQ(reports_.size(), 2U);
  EXPECT_TRUE(loop_.runUntil([&] { return another == nullptr; }));
  EXPECT_THAT(otherReports, ElementsAre(Pair("com.apple.Mail", 0), Pair("handler", 0)));
}

TEST_F(SessionTerminationsTest, aHandlerMayNestALoopThatReportsToOthers) {
  const Observation observation = observe(reports_);
  bool isOver = false;
  const Observation nesting =
      workspace_.observeTerminations([&](const std::shared_ptr<RunningApplication>& application) {
        if (application->bundleIdentifier() != safari) return;
        { BusClient().take("com.apple.Mail"); }
        EXPECT_TRUE(loop_.runUntil([&] { return !reports_.empty() && reports_.back().first == "com.apple.Mail"; }));
        isOver = true;
      });
  { BusClient().take(safari); }
  EXPECT_TRUE(loop_.runUntil([&] { return isOver; }));
}

TEST_F(SessionTerminationsTest, observingStartsNoApplication) {
  if (!bus_.hasStartedSomething()) GTEST_SKIP() << "this kernel does not list the children of a process";
  const Observation observation = observe(reports_);
  catchUp(reports_);
  EXPECT_EQ(bus_.hasStartedSomething(), false);
}

TEST_F(SessionTerminationsTest, staysIdleAfterTheBusGoesAway) {
  const NameOwner owner(safari);
  const Observation observation = observe(reports_);
  bus_.stop();
  bool isLater = false;
  mainLoop_.after(200ms, [&] { isLater = true; });
  const std::clock_t start = std::clock();
  EXPECT_TRUE(loop_.runUntil([&] { return isLater; }));
  EXPECT_LT(std::clock() - start, CLOCKS_PER_SEC / 10);
  EXPECT_THAT(reports_, IsEmpty());
}

TEST_F(SessionTerminationsTest, aHungBusDelaysObserversOnlyBriefly) {
  SessionWorkspace impatient(loop_, 50ms);
  NameOwner owner(safari);
  const int process = owner.process();
  kill(bus_.process(), SIGSTOP);
  const auto start = std::chrono::steady_clock::now();
  const Observation observation =
      impatient.observeTerminations([&](const std::shared_ptr<RunningApplication>& application) {
        reports_.emplace_back(*application->bundleIdentifier(), application->processIdentifier());
      });
  const Observation wake = impatient.observeWake([] {});
  impatient.openApplication("/nonexistent.desktop");
  EXPECT_LT(std::chrono::steady_clock::now() - start, 10s);
  kill(bus_.process(), SIGCONT);
  EXPECT_TRUE(loop_.runUntil([&] {
    BusClient().take(marker);
    return !reports_.empty();
  })) << "the bus replies in the end";
  reports_.clear();
  learnProcesses(reports_);
  owner.leave();
  catchUp(reports_);
  EXPECT_THAT(reports_, ElementsAre(Pair(safari, process)));
}

TEST_F(SessionTerminationsTest, reportsNothingWithoutABus) {
  const EnvironmentScope runtime("XDG_RUNTIME_DIR", std::nullopt);
  for (const std::optional<std::string>& address :
       {std::optional<std::string>(), std::optional<std::string>("unix:path=/nonexistent/bus"),
        std::optional<std::string>("nonsense"), std::optional<std::string>("autolaunch:"),
        std::optional<std::string>("")}) {
    address_.set(address);
    const Observation observation = observe(reports_);
    EXPECT_NE(observation, nullptr);
    bool isLater = false;
    mainLoop_.after(1ms, [&] { isLater = true; });
    EXPECT_TRUE(loop_.runUntil([&] { return isLater; }));
  }
  EXPECT_THAT(reports_, IsEmpty());
}

class TerminationWatchTest : public SessionTerminationsTest {
 protected:
  Reports reports_;
  TerminationWatch watch_{
      loop_, [this](const Departure& departure) { reports_.emplace_back(departure.name, departure.process); }, 2s};
};

TEST_F(TerminationWatchTest, findsWhoQueuesLater) {
  NameOwner first(safari);
  NameOwner second(safari);
  NameOwner third(safari, 2);
  const std::vector<int> processes{first.process(), second.process(), third.process()};
  EXPECT_TRUE(loop_.runUntil([&] { return watch_.processesWith(safari).size() == 4; }));
  second.leave();
  catchUp(reports_);
  EXPECT_THAT(reports_, ElementsAre(Pair(safari, processes[1])));
  third.leave();
  first.leave();
  catchUp(reports_);
  EXPECT_THAT(reports_,
              ElementsAre(Pair(safari, processes[1]), Pair(safari, processes[2]), Pair(safari, processes[0])));
}

TEST_F(TerminationWatchTest, findsWhoQueuesLongAfterItsArrival) {
  BusClient waiting;
  BusClient owning;
  owning.take(safari);
  EXPECT_TRUE(loop_.runUntil([&] { return watch_.processesWith(safari).size() == 1; }));
  bool isLater = false;
  mainLoop_.after(4 * TerminationWatch::firstCheckDelay, [&] { isLater = true; });
  EXPECT_TRUE(loop_.runUntil([&] { return isLater; }));
  waiting.take(safari);
  EXPECT_TRUE(loop_.runUntil([&] { return watch_.processesWith(safari).size() == 2; }));
}

TEST_F(TerminationWatchTest, ignoresTheBusItself) {
  EXPECT_THAT(watch_.processesWith("org.freedesktop.DBus"), IsEmpty());
}

TEST_F(TerminationWatchTest, reportsManyShortLivedApplications) {
  constexpr int count = 200;
  for (int number = 0; number < count; ++number)
    BusClient().take(("com.example.Number" + std::to_string(number)).c_str());
  catchUp(reports_);
  ASSERT_EQ(reports_.size(), std::size_t{count});
  for (int number = 0; number < count; ++number) {
    const auto& [name, process] = reports_[static_cast<std::size_t>(number)];
    EXPECT_EQ(name, "com.example.Number" + std::to_string(number));
    EXPECT_TRUE(process == getpid() || process == -1) << "it may have left before its process was requested";
  }
}

}  // namespace
