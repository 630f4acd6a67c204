// Stand-ins for dpkg, apt and pkexec in PATH, and for PackageKit on a private system bus.
#include "platform/linux/updates/system_packages.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <systemd/sd-bus.h>

#include <array>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "tests/platform/linux/session/bus_client.h"
#include "tests/platform/linux/session/poll_loop.h"
#include "tests/support/environment_scope.h"
#include "tests/support/scratch_folder.h"
#include "tests/support/session_bus.h"

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

constexpr const char* packageKit = "org.freedesktop.PackageKit";
constexpr const char* transactionPath = "/7_abcdef";

// How the stand-in ends an installation.
struct Ending {
  std::uint32_t exit = 1;   // success
  std::uint32_t error = 0;  // reported before, unless 0
  std::string details{};
  bool refusesTransactions = false;
  bool refusesFiles = false;
  bool leavesTheBus = false;
};

class StandInPackageKit {
 public:
  StandInPackageKit(PollLoop& loop, const std::string& address, Ending ending)
      : ending_(std::move(ending)), client_(address) {
    EXPECT_GE(sd_bus_add_filter(client_.bus(), nullptr, onMessage, this), 0);
    client_.take(packageKit);
    watch_ = loop.watch(sd_bus_get_fd(client_.bus()), Readiness::readable, [this] {
      while (sd_bus_process(client_.bus(), nullptr) > 0) continue;
      if (mustLeave_) client_.release(packageKit);
      mustLeave_ = false;
    });
  }

  std::vector<std::string> calls;

 private:
  static int onMessage(sd_bus_message* message, void* self, sd_bus_error* error) {
    const bool isCall = sd_bus_message_is_method_call(message, nullptr, nullptr) > 0;
    return isCall ? static_cast<StandInPackageKit*>(self)->react(message, error) : 0;
  }

  int react(sd_bus_message* call, sd_bus_error* error) {
    const std::string member = sd_bus_message_get_member(call);
    calls.push_back(member + described(call, member));
    if (ending_.refusesTransactions || (ending_.refusesFiles && member == "InstallFiles"))
      return sd_bus_error_set_const(error, "org.freedesktop.PackageKit.Denied", "denied");
    if (member == "CreateTransaction") return sd_bus_reply_method_return(call, "o", transactionPath);
    EXPECT_STREQ(sd_bus_message_get_path(call), transactionPath);
    EXPECT_STREQ(sd_bus_message_get_interface(call), "org.freedesktop.PackageKit.Transaction");
    EXPECT_GE(sd_bus_reply_method_return(call, nullptr), 0);
    if (member == "InstallFiles") end();
    return 1;
  }

  static std::string described(sd_bus_message* call, const std::string& member) {
    std::uint64_t flags = 0;
    if (member == "InstallFiles") {
      EXPECT_GT(sd_bus_message_read(call, "t", &flags), 0);
    }
    if (member != "InstallFiles" && member != "SetHints") return "";
    std::string text = member == "InstallFiles" ? " " + std::to_string(flags) : "";
    EXPECT_GT(sd_bus_message_enter_container(call, 'a', "s"), 0);
    const char* word = nullptr;
    while (sd_bus_message_read_basic(call, 's', &word) > 0) text += std::string(" ") + word;
    return text;
  }

  void end() {
    mustLeave_ = ending_.leavesTheBus;
    if (mustLeave_) return;
    const char* interface = "org.freedesktop.PackageKit.Transaction";
    if (ending_.error != 0) {
      EXPECT_GE(sd_bus_emit_signal(client_.bus(), transactionPath, interface, "ErrorCode", "us", ending_.error,
                                   ending_.details.c_str()),
                0);
    }
    EXPECT_GE(sd_bus_emit_signal(client_.bus(), transactionPath, interface, "Finished", "uu", ending_.exit, 1U), 0);
  }

  Ending ending_;
  BusClient client_;
  std::unique_ptr<DescriptorWatch> watch_;
  bool mustLeave_ = false;
};

class SystemPackagesTest : public testing::Test {
 protected:
  SystemPackagesTest() {
    program("dpkg-query", "echo \"quillery: $2\"");
    program("apt-cache", "");
    program("xdg-open", "");
  }

  // A program in PATH, which first logs its name and arguments.
  void program(const std::string& name, const std::string& script) {
    makeFile(scratch_.path(name), "#!/bin/sh\necho \"${0##*/} $*\" >>" + scratch_.path("log") + "\n" + script + "\n");
    std::filesystem::permissions(scratch_.path(name), std::filesystem::perms::owner_all);
  }
  std::string log() const {
    return std::filesystem::exists(scratch_.path("log")) ? contentOf(scratch_.path("log")) : "";
  }

  OwnPackage own() {
    std::optional<OwnPackage> result;
    const auto request = packages_.findOwn([&](const OwnPackage& found) { result = found; });
    EXPECT_TRUE(loop_.runUntil([&] { return result.has_value(); }));
    return result.value_or(OwnPackage{});
  }

  // How an installation ends: its outcome and reason.
  std::string installed() {
    std::string result;
    const auto request = packages_.install(path_, [&](Installation installation, const std::string& reason) {
      constexpr std::array words = {"done", "cancelled", "failed", "left"};
      result = words.at(static_cast<std::size_t>(installation)) + (reason.empty() ? "" : ": " + reason);
    });
    EXPECT_TRUE(loop_.runUntil([&] { return !result.empty(); }));
    return result;
  }

  ScratchFolder scratch_;
  SessionBus bus_{scratch_};
  std::string path_ = scratch_.path("quillery.deb");
  EnvironmentScope address_{"DBUS_SYSTEM_BUS_ADDRESS", bus_.address()};
  EnvironmentScope session_{"DBUS_SESSION_BUS_ADDRESS", "disabled:"};
  EnvironmentScope programs_{"PATH", scratch_.path() + ":/usr/bin:/bin"};
  PollLoop loop_;
  SystemPackages packages_{loop_, "/usr/bin/quillery"};
};

TEST_F(SystemPackagesTest, findsTheRepositoryOfItsPackage) {
  program("apt-cache", "echo 'quillery | 0.1.0-1 | http://deb.example.com/debian bookworm/main amd64 Packages'");
  EXPECT_EQ(own().name, "quillery");
  EXPECT_TRUE(own().hasRepository);
  EXPECT_THAT(log(), HasSubstr("dpkg-query --search /usr/bin/quillery\napt-cache madison quillery\n"));
}

TEST_F(SystemPackagesTest, knowsAPackageThatNoRepositoryOffers) {
  program("apt-cache", "true");
  EXPECT_EQ(own().name, "quillery");
  EXPECT_FALSE(own().hasRepository);
}

TEST_F(SystemPackagesTest, knowsAProgramThatBelongsToNoPackage) {
  program("dpkg-query", "echo 'dpkg-query: no path found'; exit 1");
  EXPECT_EQ(own().name, "");
  EXPECT_FALSE(own().hasRepository);
  EXPECT_THAT(log(), Not(HasSubstr("apt-cache")));
}

TEST_F(SystemPackagesTest, takesFailuresForNoRepository) {
  program("apt-cache", "echo 'E: something'; exit 100");
  EXPECT_FALSE(own().hasRepository);
  program("dpkg-query", "exit 0");
  EXPECT_EQ(own().name, "");
}

TEST(PackageSearch, findsTheNameInTheOutputOfDpkg) {
  EXPECT_EQ(packageIn("quillery: /usr/bin/quillery\n"), "quillery");
  EXPECT_EQ(packageIn("quillery:amd64: /usr/bin/quillery\n"), "quillery");
  EXPECT_EQ(packageIn("a, b: /usr/bin/quillery\n"), "a");
  EXPECT_EQ(packageIn("diversion by a from: /usr/bin/quillery\ndiversion by a to: /x\nb: /usr/bin/quillery"), "b");
  EXPECT_EQ(packageIn(""), "");
  EXPECT_EQ(packageIn("no path\n: /x\n"), "");
}

TEST(PackageFields, areReadFromTheOutputOfDpkg) {
  const auto facts = factsIn("Package: quillery\nVersion: 1:0.2.0-rc1-3\nArchitecture: amd64\n");
  ASSERT_TRUE(facts);
  EXPECT_EQ(facts->name, "quillery");
  EXPECT_EQ(facts->version, "0.2.0-rc1");
  EXPECT_EQ(facts->processor, "amd64");
  EXPECT_EQ(factsIn("Package: a\nVersion: 2\nArchitecture: all\n")->version, "2");
  for (const char* fields : {"", "Package: a\nVersion: 2\n", "Package: a\nVersion: \nArchitecture: all\n", "2\n"})
    EXPECT_FALSE(factsIn(fields)) << fields;
}

TEST_F(SystemPackagesTest, readsAPackageFile) {
  program("dpkg-deb", "printf 'Package: quillery\\nVersion: 0.2.0-1\\nArchitecture: amd64\\n'");
  std::optional<PackageFacts> facts;
  bool isDone = false;
  const auto request = packages_.describe(path_, [&](const std::optional<PackageFacts>& described) {
    facts = described;
    isDone = true;
  });
  EXPECT_TRUE(loop_.runUntil([&] { return isDone; }));
  ASSERT_TRUE(facts);
  EXPECT_EQ(facts->version, "0.2.0");
  EXPECT_EQ(log(), "dpkg-deb --field " + path_ + " Package Version Architecture\n");
}

TEST_F(SystemPackagesTest, refusesAFileThatIsNoPackage) {
  makeFile(path_, "no package");
  std::optional<bool> isPackage;
  const auto request = packages_.describe(path_, [&](const auto& facts) { isPackage = facts.has_value(); });
  EXPECT_TRUE(loop_.runUntil([&] { return isPackage.has_value(); }));
  EXPECT_EQ(isPackage, false);
}

TEST_F(SystemPackagesTest, installsWithPackageKit) {
  const StandInPackageKit service(loop_, bus_.address(), {});
  EXPECT_EQ(installed(), "done");
  EXPECT_THAT(service.calls, ElementsAre("CreateTransaction", "SetHints interactive=true", "InstallFiles 0 " + path_));
  EXPECT_THAT(log(), Not(HasSubstr("pkexec")));
}

TEST_F(SystemPackagesTest, saysWhyPackageKitFailed) {
  const StandInPackageKit service(loop_, bus_.address(), {.exit = 2, .error = 13, .details = "A library\nis missing."});
  EXPECT_EQ(installed(), "failed: A library\\u{0A}is missing.");
}

TEST_F(SystemPackagesTest, failsEvenIfPackageKitGivesNoReason) {
  const StandInPackageKit service(loop_, bus_.address(), {.exit = 2});
  EXPECT_EQ(installed(), "failed: PackageKit gave no reason.");
}

TEST_F(SystemPackagesTest, endsQuietlyIfTheUserDeclines) {
  for (const Ending& ending : {Ending{.exit = 2, .error = 48, .details = "no"}, Ending{.exit = 3, .details = ""},
                               Ending{.exit = 2, .error = 17, .details = "no"}}) {
    const StandInPackageKit service(loop_, bus_.address(), ending);
    EXPECT_EQ(installed(), "cancelled") << ending.error;
  }
}

TEST_F(SystemPackagesTest, noticesThatPackageKitEnds) {
  const StandInPackageKit service(loop_, bus_.address(), {.leavesTheBus = true});
  EXPECT_EQ(installed(), "failed: PackageKit ended before the installation did.");
}

TEST_F(SystemPackagesTest, installsWithAptIfPackageKitCannot) {
  program("pkexec", "true");
  EXPECT_EQ(installed(), "done") << "there is no PackageKit";
  EXPECT_THAT(log(), HasSubstr("pkexec /usr/bin/apt-get install --yes --no-remove " + path_ + "\n"));
  for (const Ending& ending : {Ending{.refusesTransactions = true}, Ending{.refusesFiles = true}}) {
    const StandInPackageKit service(loop_, bus_.address(), ending);
    EXPECT_EQ(installed(), "done");
  }
  address_.set("unix:path=" + scratch_.path("no bus"));
  EXPECT_EQ(installed(), "done") << "there is no bus";
}

TEST_F(SystemPackagesTest, saysWhyAptFailed) {
  program("pkexec", "echo Reading; echo 'E: Unmet dependencies.'; echo more; exit 100");
  EXPECT_EQ(installed(), "failed: Unmet dependencies.");
  program("pkexec", "echo last; exit 1");
  EXPECT_EQ(installed(), "failed: last");
  program("pkexec", "exit 1");
  EXPECT_EQ(installed(), "failed: apt-get failed without giving a reason.");
}

TEST_F(SystemPackagesTest, endsQuietlyIfTheUserDeclinesPkexec) {
  program("pkexec", "exit 126");
  EXPECT_EQ(installed(), "cancelled");
}

TEST_F(SystemPackagesTest, showsTheFileIfNothingCanInstallIt) {
  program("pkexec", "exit 127");
  EXPECT_EQ(installed(), "left");
  EXPECT_TRUE(loop_.runUntil([&] { return log().find("xdg-open " + scratch_.path()) != std::string::npos; }));
}

TEST_F(SystemPackagesTest, installsNothingForAProgramWithoutAPackage) {
  program("dpkg-query", "exit 1");
  program("pkexec", "true");
  const StandInPackageKit service(loop_, bus_.address(), {});
  EXPECT_EQ(installed(), "left");
  EXPECT_THAT(service.calls, IsEmpty());
  EXPECT_THAT(log(), Not(HasSubstr("pkexec")));
}

TEST_F(SystemPackagesTest, callsNoHandlerOfAReleasedRequest) {
  program("pkexec", "true");
  bool isCalled = false;
  packages_.install(path_, [&](Installation, const std::string&) { isCalled = true; });
  packages_.findOwn([&](const OwnPackage&) { isCalled = true; });
  own();
  EXPECT_FALSE(isCalled);
}

}  // namespace
