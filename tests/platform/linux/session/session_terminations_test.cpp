// Terminations on a real session bus, of real processes. That nothing was told is shown by a marker, another
// application that ends after it: the bus keeps the order.
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
#include "tests/platform/linux/environment_scope.h"
#include "tests/platform/linux/scratch_folder.h"
#include "tests/platform/linux/session/bus_client.h"
#include "tests/platform/linux/session/poll_loop.h"
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

using Told = std::vector<std::pair<std::string, int>>;

class SessionTerminationsTest : public testing::Test {
 protected:
  Observation observe(Told& told) {
    return workspace_.observeTerminations([&told](const std::shared_ptr<RunningApplication>& application) {
      ASSERT_NE(application, nullptr);
      EXPECT_FALSE(application->terminate());
      told.emplace_back(application->bundleIdentifier().value_or("none"), application->processIdentifier());
    });
  }

  // Everything that happened on the bus before is told when this returns, but for the marker itself.
  void catchUp(Told& told) {
    const std::string end = marker + std::to_string(++markers_);
    BusClient().take(end.c_str());
    EXPECT_TRUE(loop_.runUntil(
        [&] { return std::any_of(told.begin(), told.end(), [&](const auto& entry) { return entry.first == end; }); }));
    std::erase_if(told, [](const auto& entry) { return entry.first.starts_with(marker); });
  }

  // Who is on the bus now is known with its process when this returns.
  void getToKnow(Told& told) {
    catchUp(told);         // so that the bus is asked
    const BusClient last;  // once it has served one that came after the question, it has answered that
  }

  ScratchFolder scratch_;
  SessionBus bus_{scratch_};
  EnvironmentScope address_{"DBUS_SESSION_BUS_ADDRESS", bus_.address()};
  PollLoop loop_;
  SessionMainLoop mainLoop_{loop_};
  SessionWorkspace workspace_{loop_};
  Told told_;
  int markers_ = 0;
};

TEST_F(SessionTerminationsTest, anApplicationThatRanBeforeIsTold) {
  NameOwner owner(safari);
  const NameOwner other("com.apple.Mail");
  const int process = owner.process();
  const Observation observation = observe(told_);
  owner.leave();
  EXPECT_THAT(told_, IsEmpty()) << "nothing is told but by the loop";
  catchUp(told_);
  EXPECT_THAT(told_, ElementsAre(Pair(safari, process)));
}

TEST_F(SessionTerminationsTest, anApplicationThatStartsLaterIsTold) {
  const Observation observation = observe(told_);
  NameOwner owner(safari);
  const int process = owner.process();
  getToKnow(told_);
  owner.leave();
  catchUp(told_);
  EXPECT_THAT(told_, ElementsAre(Pair(safari, process)));
  NameOwner again(safari);
  const int nextProcess = again.process();
  getToKnow(told_);
  again.leave();
  catchUp(told_);
  EXPECT_THAT(told_, ElementsAre(Pair(safari, process), Pair(safari, nextProcess)));
}

TEST_F(SessionTerminationsTest, instancesInLineThatWereThereBeforeAreEachToldWhoeverLeavesFirst) {
  NameOwner first(safari);
  NameOwner second(safari);
  NameOwner third(safari);
  const std::vector<int> processes{first.process(), second.process(), third.process()};
  const Observation observation = observe(told_);
  third.leave();
  catchUp(told_);
  EXPECT_THAT(told_, ElementsAre(Pair(safari, processes[2])));
  first.leave();
  catchUp(told_);
  second.leave();
  catchUp(told_);
  EXPECT_THAT(told_, ElementsAre(Pair(safari, processes[2]), Pair(safari, processes[0]), Pair(safari, processes[1])));
}

TEST_F(SessionTerminationsTest, aProcessIsToldOnceWithItsLastConnection) {
  NameOwner owner(safari, 3);
  NameOwner other(safari, 2);
  const int process = owner.process();
  const int otherProcess = other.process();
  const Observation observation = observe(told_);
  owner.leave();
  other.leave();
  catchUp(told_);
  EXPECT_THAT(told_, UnorderedElementsAre(Pair(safari, process), Pair(safari, otherProcess)));
}

TEST_F(SessionTerminationsTest, aConnectionThatClosesWhileItsProcessStillWaitsIsNotTold) {
  const Observation observation = observe(told_);
  auto owning = std::make_unique<BusClient>();
  owning->take(safari);
  auto alsoOwning = std::make_unique<BusClient>();
  owning->take("com.apple.Mail");
  owning->giveUp(safari);
  alsoOwning->take(safari);
  getToKnow(told_);
  owning.reset();
  catchUp(told_);
  EXPECT_THAT(told_, ElementsAre(Pair("com.apple.Mail", getpid())));
  alsoOwning.reset();
  catchUp(told_);
  EXPECT_THAT(told_, ElementsAre(Pair("com.apple.Mail", getpid()), Pair(safari, getpid())));
}

TEST_F(SessionTerminationsTest, anApplicationThatGivesUpItsNameIsToldOnceItLeaves) {
  const Observation observation = observe(told_);
  auto application = std::make_unique<BusClient>();
  application->take(safari);
  application->giveUp(safari);
  getToKnow(told_);
  EXPECT_THAT(told_, IsEmpty());
  application.reset();
  catchUp(told_);
  EXPECT_THAT(told_, ElementsAre(Pair(safari, getpid())));
}

TEST_F(SessionTerminationsTest, anApplicationThatWentBeforeTheBusCouldBeAskedIsToldWithoutAProcess) {
  const Observation observation = observe(told_);
  { BusClient().take(safari); }
  catchUp(told_);
  EXPECT_THAT(told_, ElementsAre(Pair(safari, -1)));
}

TEST_F(SessionTerminationsTest, anApplicationIsToldUnderEachOfItsNames) {
  auto application = std::make_unique<BusClient>();
  application->take(safari);
  application->take("org.freedesktop.Example");
  const Observation observation = observe(told_);
  application->take("com.apple.Mail");
  application.reset();
  catchUp(told_);
  EXPECT_THAT(told_, UnorderedElementsAre(Pair(safari, getpid()), Pair("com.apple.Mail", getpid()),
                                          Pair("org.freedesktop.Example", getpid())));
}

TEST_F(SessionTerminationsTest, aConnectionWithoutANameIsNotTold) {
  { const BusClient before; }
  const Observation observation = observe(told_);
  { const BusClient after; }
  catchUp(told_);
  EXPECT_THAT(told_, IsEmpty());
}

TEST_F(SessionTerminationsTest, eachObserverIsToldUntilItsReferenceIsGivenUp) {
  Told toldToo;
  const Observation observation = observe(told_);
  Observation another = observe(toldToo);
  { BusClient().take(safari); }
  catchUp(told_);
  catchUp(toldToo);
  EXPECT_THAT(told_, Contains(Pair(safari, _)));
  EXPECT_THAT(toldToo, Contains(Pair(safari, _)));
  another.reset();
  toldToo.clear();
  told_.clear();
  { BusClient().take(safari); }
  catchUp(told_);
  EXPECT_THAT(told_, ElementsAre(Pair(safari, _)));
  EXPECT_THAT(toldToo, IsEmpty());
}

TEST_F(SessionTerminationsTest, anObserverThatGaveUpIsNotToldWhatWasOnItsWay) {
  Told toldToo;
  const Observation observation = observe(told_);
  Observation another;
  another = workspace_.observeTerminations([&](const std::shared_ptr<RunningApplication>& application) {
    toldToo.emplace_back(*application->bundleIdentifier(), 0);
    another.reset();  // destroys the handler, which goes on
    toldToo.emplace_back("handler", 0);
  });
  {
    BusClient application;
    application.take(safari);
    application.take("com.apple.Mail");
  }
  catchUp(told_);
  EXPECT_EQ(told_.size(), 2U);
  EXPECT_TRUE(loop_.runUntil([&] { return another == nullptr; }));
  EXPECT_THAT(toldToo, ElementsAre(Pair("com.apple.Mail", 0), Pair("handler", 0)));
}

TEST_F(SessionTerminationsTest, aHandlerMayRunALoopOfItsOwnInWhichOthersAreTold) {
  const Observation observation = observe(told_);
  bool isOver = false;
  const Observation nesting =
      workspace_.observeTerminations([&](const std::shared_ptr<RunningApplication>& application) {
        if (application->bundleIdentifier() != safari) return;
        { BusClient().take("com.apple.Mail"); }
        EXPECT_TRUE(loop_.runUntil([&] { return !told_.empty() && told_.back().first == "com.apple.Mail"; }));
        isOver = true;
      });
  { BusClient().take(safari); }
  EXPECT_TRUE(loop_.runUntil([&] { return isOver; }));
}

TEST_F(SessionTerminationsTest, observingStartsNothing) {
  if (!bus_.hasStartedSomething()) GTEST_SKIP() << "this kernel does not list a process's children";
  const Observation observation = observe(told_);
  catchUp(told_);
  EXPECT_EQ(bus_.hasStartedSomething(), false);
}

TEST_F(SessionTerminationsTest, aBusThatGoesAwayTellsNothingMoreAndKeepsNobodyBusy) {
  const NameOwner owner(safari);
  const Observation observation = observe(told_);
  bus_.stop();
  bool isLater = false;
  mainLoop_.after(200ms, [&] { isLater = true; });
  const std::clock_t start = std::clock();
  EXPECT_TRUE(loop_.runUntil([&] { return isLater; }));
  EXPECT_LT(std::clock() - start, CLOCKS_PER_SEC / 10);
  EXPECT_THAT(told_, IsEmpty());
}

TEST_F(SessionTerminationsTest, aBusThatHangsHoldsNobodyUpForLong) {
  SessionWorkspace impatient(loop_, 50ms);
  NameOwner owner(safari);
  const int process = owner.process();
  kill(bus_.process(), SIGSTOP);
  const auto start = std::chrono::steady_clock::now();
  const Observation observation =
      impatient.observeTerminations([&](const std::shared_ptr<RunningApplication>& application) {
        told_.emplace_back(*application->bundleIdentifier(), application->processIdentifier());
      });
  const Observation wake = impatient.observeWake([] {});
  impatient.openApplication("/nonexistent.desktop");
  EXPECT_LT(std::chrono::steady_clock::now() - start, 10s);
  kill(bus_.process(), SIGCONT);
  EXPECT_TRUE(loop_.runUntil([&] {
    BusClient().take(marker);
    return !told_.empty();
  })) << "the bus answers in the end";
  told_.clear();
  getToKnow(told_);
  owner.leave();
  catchUp(told_);
  EXPECT_THAT(told_, ElementsAre(Pair(safari, process)));
}

TEST_F(SessionTerminationsTest, withoutABusNothingIsTold) {
  const EnvironmentScope runtime("XDG_RUNTIME_DIR", std::nullopt);
  for (const std::optional<std::string>& address :
       {std::optional<std::string>(), std::optional<std::string>("unix:path=/nonexistent/bus"),
        std::optional<std::string>("nonsense"), std::optional<std::string>("autolaunch:"),
        std::optional<std::string>("")}) {
    address_.set(address);
    const Observation observation = observe(told_);
    EXPECT_NE(observation, nullptr);
    bool isLater = false;
    mainLoop_.after(1ms, [&] { isLater = true; });
    EXPECT_TRUE(loop_.runUntil([&] { return isLater; }));
  }
  EXPECT_THAT(told_, IsEmpty());
}

class TerminationWatchTest : public SessionTerminationsTest {
 protected:
  Told told_;
  TerminationWatch watch_{
      loop_, [this](const Departure& departure) { told_.emplace_back(departure.name, departure.process); }, 2s};
};

TEST_F(TerminationWatchTest, whoGetsInLineLaterIsFound) {
  NameOwner first(safari);
  NameOwner second(safari);
  NameOwner third(safari, 2);
  const std::vector<int> processes{first.process(), second.process(), third.process()};
  EXPECT_TRUE(loop_.runUntil([&] { return watch_.processesWith(safari).size() == 4; }));
  second.leave();
  catchUp(told_);
  EXPECT_THAT(told_, ElementsAre(Pair(safari, processes[1])));
  third.leave();
  first.leave();
  catchUp(told_);
  EXPECT_THAT(told_, ElementsAre(Pair(safari, processes[1]), Pair(safari, processes[2]), Pair(safari, processes[0])));
}

TEST_F(TerminationWatchTest, whoGetsInLineLongAfterItArrivedIsFound) {
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

TEST_F(TerminationWatchTest, theBusItselfIsNobody) {
  EXPECT_THAT(watch_.processesWith("org.freedesktop.DBus"), IsEmpty());
}

TEST_F(TerminationWatchTest, manyThatComeAndGoAreAllTold) {
  constexpr int count = 200;
  for (int number = 0; number < count; ++number)
    BusClient().take(("com.example.Number" + std::to_string(number)).c_str());
  catchUp(told_);
  ASSERT_EQ(told_.size(), std::size_t{count});
  for (int number = 0; number < count; ++number) {
    const auto& [name, process] = told_[static_cast<std::size_t>(number)];
    EXPECT_EQ(name, "com.example.Number" + std::to_string(number));
    EXPECT_TRUE(process == getpid() || process == -1) << "it may have left before the bus could be asked";
  }
}

}  // namespace
