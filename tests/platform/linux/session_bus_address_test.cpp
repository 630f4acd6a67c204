// The session bus of the environment, and the user's usual one.
#include "platform/linux/session_bus_address.h"

#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstring>
#include <filesystem>
#include <optional>
#include <string>

#include "platform/posix/file_descriptor.h"
#include "tests/platform/linux/separate_mounts.h"
#include "tests/support/child_process.h"
#include "tests/support/environment_scope.h"
#include "tests/support/scratch_folder.h"

namespace {

// A socket that is bound to a path.
class Socket {
 public:
  explicit Socket(const std::string& path) : descriptor_(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
    sockaddr_un place{};
    place.sun_family = AF_UNIX;
    std::strncpy(place.sun_path, path.c_str(), sizeof place.sun_path - 1);
    EXPECT_EQ(bind(descriptor_.get(), reinterpret_cast<const sockaddr*>(&place), sizeof place), 0) << path;
  }

 private:
  FileDescriptor descriptor_;
};

class SessionBusAddress : public testing::Test {
 protected:
  static std::string address() { return sessionBusAddress().value_or("none"); }
  // Returns the address in a child process with a /run of its own, in which `prepare` has created something. If that is
  // impossible, skips the test and returns nothing.
  template <class Preparation>
  std::string addressWithRun(Preparation prepare) {
    return inChildProcess([&]() -> std::string {
      if (const std::string problem = separateRun(); !problem.empty()) return "no: " + problem;
      prepare();
      return address();
    });
  }
  static std::string runtimeFolder(uid_t user) {
    std::string folder = "/run/user/" + std::to_string(user);
    std::filesystem::create_directories(folder);
    return folder;
  }

  ScratchFolder scratch_;
  EnvironmentScope home_{"HOME", scratch_.path()};
  EnvironmentScope address_{"DBUS_SESSION_BUS_ADDRESS", std::nullopt};
  EnvironmentScope runtime_{"XDG_RUNTIME_DIR", scratch_.path()};
};

TEST_F(SessionBusAddress, isInTheEnvironment) {
  const Socket bus(scratch_.path("bus"));
  address_.set("unix:abstract=/tmp/dbus-1,guid=2");
  EXPECT_EQ(address(), "unix:abstract=/tmp/dbus-1,guid=2");
  address_.set("");
  EXPECT_EQ(address(), "unix:path=" + scratch_.path("bus"));
}

TEST_F(SessionBusAddress, isInTheRuntimeFolder) {
  const Socket bus(scratch_.path("bus"));
  EXPECT_EQ(address(), "unix:path=" + scratch_.path("bus"));
}

TEST_F(SessionBusAddress, escapesWhatAddressesCannotContain) {
  const std::string folder = scratch_.path("a b;c%é");
  std::filesystem::create_directory(folder);
  const Socket bus(folder + "/bus");
  runtime_.set(folder);
  EXPECT_EQ(address(), "unix:path=" + scratch_.path("a%20b%3bc%25%c3%a9/bus"));
}

TEST_F(SessionBusAddress, isInTheUsualFolderWithoutAnEnvironment) {
  runtime_.set(std::nullopt);
  const std::string found = addressWithRun([] { Socket bus(runtimeFolder(geteuid()) + "/bus"); });
  if (found.starts_with("no: ")) GTEST_SKIP() << found;
  EXPECT_EQ(found, "unix:path=/run/user/" + std::to_string(geteuid()) + "/bus");
}

TEST_F(SessionBusAddress, isAbsentWithoutASocket) {
  makeFile(scratch_.path("bus"), "");
  const std::string found = addressWithRun([] { makeFile(runtimeFolder(geteuid()) + "/bus", ""); });
  if (found.starts_with("no: ")) GTEST_SKIP() << found;
  EXPECT_EQ(found, "none");
}

TEST_F(SessionBusAddress, isThatOfTheHomeFoldersOwner) {
  if (geteuid() != 0) GTEST_SKIP() << "needs the superuser";
  ASSERT_EQ(chown(scratch_.path().c_str(), unprivilegedUser, unprivilegedUser), 0);
  const Socket own(scratch_.path("bus"));
  const std::string usual = "/run/user/" + std::to_string(unprivilegedUser) + "/bus";
  const auto makeBuses = [&](uid_t owner) {
    Socket ours(runtimeFolder(0) + "/bus");
    Socket theirs(runtimeFolder(unprivilegedUser) + "/bus");
    EXPECT_EQ(chown(usual.c_str(), owner, owner), 0);
  };
  const std::string found = addressWithRun([&] { makeBuses(unprivilegedUser); });
  if (found.starts_with("no: ")) GTEST_SKIP() << found;
  EXPECT_EQ(found, "unix:path=" + usual);
  EXPECT_EQ(addressWithRun([&] { makeBuses(0); }), "none") << "not the user's own socket";
}

TEST_F(SessionBusAddress, mayBeInAFolderThatCannotBeSearched) {
  runtime_.set(std::nullopt);
  const std::string found = inChildProcess([&]() -> std::string {
    if (geteuid() != 0) return "no: needs the superuser";
    if (const std::string problem = separateRun(); !problem.empty()) return "no: " + problem;
    chmod(runtimeFolder(0).c_str(), 0700);
    return setuid(unprivilegedUser) == 0 ? address() : "no: cannot become another user";
  });
  if (found.starts_with("no: ")) GTEST_SKIP() << found;
  EXPECT_EQ(found, "unix:path=/run/user/0/bus");
}

}  // namespace
