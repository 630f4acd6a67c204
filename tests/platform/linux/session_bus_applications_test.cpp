// Real processes that own names on a real session bus.
#include "platform/linux/session_bus_applications.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <systemd/sd-bus.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <cstring>
#include <optional>
#include <string>
#include <vector>

#include "platform/error.h"
#include "tests/support/environment_scope.h"
#include "tests/support/scratch_folder.h"
#include "tests/support/session_bus.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::StartsWith;
using testing::UnorderedElementsAre;
using namespace std::chrono_literals;

constexpr const char* safari = "com.apple.Safari";
constexpr auto soon = 100ms;

std::vector<int> identifiers(SessionBusApplications& applications, const std::string& identifier = safari) {
  std::vector<int> found;
  for (const auto& application : applications.withBundleIdentifier(identifier))
    found.push_back(application->processIdentifier());
  return found;
}

// Returns the text of the error that a query throws; empty if it throws none.
std::string problem(SessionBusApplications& applications) {
  try {
    applications.withBundleIdentifier(safari);
    return {};
  } catch (const Error& error) {
    return error.description();
  }
}

class SessionBusApplicationsTest : public testing::Test {
 protected:
  ScratchFolder scratch_;
  SessionBus bus_{scratch_};
  EnvironmentScope address_{"DBUS_SESSION_BUS_ADDRESS", bus_.address()};
  SessionBusApplications applications_;
};

TEST_F(SessionBusApplicationsTest, findsNoneIfNobodyOwnsTheName) {
  EXPECT_THAT(identifiers(applications_), IsEmpty());
  EXPECT_THAT(identifiers(applications_, "com.apple.Other"), IsEmpty());
}

TEST_F(SessionBusApplicationsTest, findsTheOwnerOfTheNameUntilItLeaves) {
  NameOwner owner(safari);
  EXPECT_THAT(identifiers(applications_), ElementsAre(owner.process()));
  EXPECT_THAT(identifiers(applications_, "com.apple"), IsEmpty());
  EXPECT_THAT(identifiers(applications_, "com.apple.Safari.Extra"), IsEmpty());
  owner.leave();
  // The bus handles the end of a connection before it serves a connection that is made later.
  const NameOwner other("com.example.Other");
  EXPECT_THAT(identifiers(applications_), IsEmpty());
}

TEST_F(SessionBusApplicationsTest, findsProcessesThatAreQueuedForTheName) {
  const NameOwner first(safari);
  const NameOwner second(safari);
  EXPECT_THAT(identifiers(applications_), ElementsAre(first.process(), second.process()));
}

TEST_F(SessionBusApplicationsTest, findsAProcessWithSeveralConnectionsOnce) {
  const NameOwner first(safari, 3);
  const NameOwner second(safari, 2);
  EXPECT_THAT(identifiers(applications_), UnorderedElementsAre(first.process(), second.process()));
}

TEST_F(SessionBusApplicationsTest, findsNoneForAnInvalidName) {
  for (const char* name : {"", "no dots", "..", "com.apple.Sa fari", "1.2"})
    EXPECT_THAT(identifiers(applications_, name), IsEmpty()) << name;
  const NameOwner owner(safari);
  EXPECT_THAT(identifiers(applications_), ElementsAre(owner.process())) << "the connection still works";
}

TEST_F(SessionBusApplicationsTest, startsNoApplication) {
  if (!bus_.hasStartedSomething()) GTEST_SKIP() << "this kernel does not list a process's children";
  EXPECT_THAT(identifiers(applications_), IsEmpty());
  EXPECT_EQ(bus_.hasStartedSomething(), false);
}

TEST_F(SessionBusApplicationsTest, wouldNoticeAnApplicationThatTheBusStarts) {
  sd_bus* bus = nullptr;
  ASSERT_GE(sd_bus_open_user(&bus), 0);
  // Returns when the started process has ended without taking the name.
  EXPECT_LT(sd_bus_call_method(bus, "org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus",
                               "StartServiceByName", nullptr, nullptr, "su", safari, 0U),
            0);
  sd_bus_close_unref(bus);
  if (!bus_.hasStartedSomething()) GTEST_SKIP() << "this kernel does not list a process's children";
  EXPECT_EQ(bus_.hasStartedSomething(), true);
}

TEST_F(SessionBusApplicationsTest, reconnectsToABusThatWasStoppedAndStarted) {
  {
    const NameOwner owner(safari);
    EXPECT_THAT(identifiers(applications_), ElementsAre(owner.process()));
  }
  bus_.stop();
  EXPECT_THAT(identifiers(applications_), IsEmpty());
  const SessionBus again(scratch_);
  const NameOwner owner(safari);
  EXPECT_THAT(identifiers(applications_), ElementsAre(owner.process()));
}

TEST_F(SessionBusApplicationsTest, reconnectsToABusThatWasReplaced) {
  EXPECT_THAT(identifiers(applications_), IsEmpty());
  bus_.stop();
  const SessionBus again(scratch_);
  const NameOwner owner(safari);
  EXPECT_THAT(identifiers(applications_), ElementsAre(owner.process()));
}

TEST_F(SessionBusApplicationsTest, throwsInTimeIfTheBusDoesNotReply) {
  SessionBusApplications connected(soon);
  const NameOwner owner(safari);
  EXPECT_THAT(identifiers(connected), ElementsAre(owner.process()));
  kill(bus_.process(), SIGSTOP);
  const auto start = std::chrono::steady_clock::now();
  EXPECT_EQ(problem(connected), "The session bus couldn’t be asked: Connection timed out (" + bus_.address() + ").");
  SessionBusApplications unconnected(soon);
  EXPECT_EQ(problem(unconnected), problem(connected));
  EXPECT_THROW(SessionBusApplications(soon).areKnown(), Error);
  EXPECT_LT(std::chrono::steady_clock::now() - start, 10s) << "the library's own timeout is longer";
  kill(bus_.process(), SIGCONT);
  EXPECT_THAT(identifiers(applications_), ElementsAre(owner.process()));
  EXPECT_THAT(identifiers(connected), ElementsAre(owner.process()));
}

TEST_F(SessionBusApplicationsTest, areKnownWhileThereIsABus) {
  EXPECT_TRUE(applications_.areKnown());
  bus_.stop();
  EXPECT_THAT(identifiers(applications_), IsEmpty());
  EXPECT_FALSE(applications_.areKnown());
}

TEST(SessionBusApplicationsWithoutABus, findsNone) {
  EnvironmentScope address("DBUS_SESSION_BUS_ADDRESS", std::nullopt);
  SessionBusApplications applications;
  for (const char* value : {"unix:path=/nonexistent/bus", "nonsense", "autolaunch:", "disabled:"}) {
    address.set(value);
    EXPECT_THAT(identifiers(applications), IsEmpty()) << value;
    EXPECT_FALSE(applications.areKnown()) << value;
  }
}

TEST(SessionBusApplicationsWithoutABus, throwsIfTheAddressIsInvalid) {
  const EnvironmentScope address("DBUS_SESSION_BUS_ADDRESS", "unix:");
  SessionBusApplications applications;
  EXPECT_EQ(problem(applications), "The session bus couldn’t be asked: Invalid argument (unix:).");
}

TEST(SessionBusApplicationsWithoutABus, throwsIfTheSocketIsNoBus) {
  const ScratchFolder scratch;
  const int listener = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
  sockaddr_un place{};
  place.sun_family = AF_UNIX;
  std::strncpy(place.sun_path, scratch.path("bus").c_str(), sizeof place.sun_path - 1);
  ASSERT_EQ(bind(listener, reinterpret_cast<const sockaddr*>(&place), sizeof place), 0);
  ASSERT_EQ(listen(listener, 4), 0);  // never replies
  const EnvironmentScope address("DBUS_SESSION_BUS_ADDRESS", "unix:path=" + scratch.path("bus"));
  SessionBusApplications applications(soon);
  const auto start = std::chrono::steady_clock::now();
  EXPECT_THAT(problem(applications), StartsWith("The session bus couldn’t be asked: Connection timed out ("));
  EXPECT_LT(std::chrono::steady_clock::now() - start, 10s);
  close(listener);
}

}  // namespace
