// Real desktop entries, real processes, and a private session bus that starts an application.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <filesystem>
#include <sstream>
#include <string>

#include "platform/linux/session/session_main_loop.h"
#include "platform/linux/session/session_workspace.h"
#include "tests/platform/linux/session/bus_client.h"
#include "tests/platform/linux/session/poll_loop.h"
#include "tests/support/environment_scope.h"
#include "tests/support/scratch_folder.h"
#include "tests/support/session_bus.h"

namespace {

using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;
using namespace std::chrono_literals;

class OpenApplicationTest : public testing::Test {
 protected:
  std::string makeEntry(const std::string& name, const std::string& keys) {
    makeFile(scratch_.path(name), "[Desktop Entry]\nType=Application\nName=An Application\n" + keys);
    return scratch_.path(name);
  }

  // Makes a program that writes notes to descriptor 9. The file with them appears once it is complete.
  std::string makeProgram(const std::string& notes) {
    std::string path = scratch_.path("program");
    const std::string found = scratch_.path("found");
    makeFile(path, "#!/bin/sh\nexec 9>" + found + ".part\n" + notes + "\nmv " + found + ".part " + found + "\n");
    chmod(path.c_str(), 0755);
    return path;
  }

  std::string found() {
    EXPECT_TRUE(loop_.runUntil([&] { return std::filesystem::exists(scratch_.path("found")); }))
        << "nothing was started";
    return contentOf(scratch_.path("found"));
  }

  ScratchFolder scratch_;
  PollLoop loop_;
  SessionWorkspace workspace_{loop_};
};

TEST_F(OpenApplicationTest, startsTheCommandWithItsArguments) {
  const std::string program = makeProgram(R"(printf '%s|' "$@" >&9; pwd >&9)");
  workspace_.openApplication(makeEntry("a b.desktop", "Exec=" + program + " %U \"two words\" $HOME %c %k\n"));
  EXPECT_EQ(found(), "two words|$HOME|An Application|" + scratch_.path("a b.desktop") + "|" +
                         std::filesystem::current_path().string() + "\n");
}

TEST_F(OpenApplicationTest, startsInTheFolderOfTheEntry) {
  std::filesystem::create_directory(scratch_.path("work"));
  makeProgram("pwd >&9");
  const EnvironmentScope programs("PATH", scratch_.path() + ":/usr/bin:/bin");
  workspace_.openApplication(makeEntry("a.desktop", "Exec=program\nPath=" + scratch_.path("work") + "\n"));
  EXPECT_EQ(found(), scratch_.path("work") + "\n");
}

TEST_F(OpenApplicationTest, isDetachedInASessionOfItsOwn) {
  const std::string program = makeProgram("cut -d' ' -f4,6,7 /proc/$$/stat >&9");  // parent, session, terminal
  workspace_.openApplication(makeEntry("a.desktop", "Exec=" + program + "\n"));
  EXPECT_EQ(waitpid(-1, nullptr, WNOHANG), -1);
  EXPECT_EQ(errno, ECHILD) << "there is no child, not even a zombie";
  std::istringstream numbers(found());
  pid_t parent = 0;
  pid_t session = 0;
  int terminal = -1;
  EXPECT_TRUE(numbers >> parent >> session >> terminal);
  EXPECT_NE(parent, getpid());
  EXPECT_NE(session, getsid(0));
  EXPECT_EQ(terminal, 0);
}

TEST_F(OpenApplicationTest, inheritsNoDescriptors) {
  const int inheritable = open(scratch_.path("inheritable").c_str(), O_RDWR | O_CREAT, 0600);
  ASSERT_GE(inheritable, 0);
  const std::string program =
      makeProgram("own=/proc/$$/fd\nlinks=$(readlink $own/0 $own/1 $own/2 $own/*)\nprintf '%s' \"$links\" >&9");
  workspace_.openApplication(makeEntry("a.desktop", "Exec=" + program + "\n"));
  const std::string links = found();  // includes descriptors that the shell itself opened
  EXPECT_THAT(links, StartsWith("/dev/null\n/dev/null\n/dev/null\n"));
  EXPECT_THAT(links, HasSubstr("found.part"));
  EXPECT_THAT(links, Not(HasSubstr("inheritable")));
  close(inheritable);
}

TEST_F(OpenApplicationTest, resetsSignalHandlers) {
  const std::string program = makeProgram("grep -E '^Sig(Blk|Ign)' /proc/self/status >&9");
  const auto handler = signal(SIGPIPE, SIG_IGN);
  sigset_t blocked;
  sigset_t before;
  sigemptyset(&blocked);
  sigaddset(&blocked, SIGUSR1);
  sigprocmask(SIG_BLOCK, &blocked, &before);
  workspace_.openApplication(makeEntry("a.desktop", "Exec=" + program + "\n"));
  sigprocmask(SIG_SETMASK, &before, nullptr);
  EXPECT_NE(signal(SIGPIPE, handler), SIG_ERR);
  EXPECT_EQ(found(), "SigBlk:\t0000000000000000\nSigIgn:\t0000000000000000\n");
}

TEST_F(OpenApplicationTest, ignoresFailures) {
  makeFile(scratch_.path("garbage"), "no program");
  chmod(scratch_.path("garbage").c_str(), 0755);
  const std::string program = makeProgram("");
  workspace_.openApplication(scratch_.path("missing.desktop"));
  workspace_.openApplication(scratch_.path());
  workspace_.openApplication("");
  for (const std::string& keys : {std::string("Comment=no command"), std::string("Exec=/nonexistent/program"),
                                  std::string("Exec=no-such-program"), "Exec=" + scratch_.path("garbage"),
                                  "Exec=" + program + " \"open", "Exec=" + program + "\nPath=/nonexistent"})
    workspace_.openApplication(makeEntry("a.desktop", keys + "\n"));
  EXPECT_EQ(waitpid(-1, nullptr, WNOHANG), -1);
  EXPECT_EQ(errno, ECHILD);
  EXPECT_FALSE(std::filesystem::exists(scratch_.path("found")));
}

class OpenByBusTest : public OpenApplicationTest {
 protected:
  static constexpr const char* name = "com.example.Some-App2";

  // Makes the program that the bus starts for the name. Must be called before the bus starts.
  static const ScratchFolder& withService(const ScratchFolder& scratch) {
    makeFile(scratch.path("example.service"), std::string("[D-BUS Service]\nName=") + name + "\nExec=/usr/bin/touch " +
                                                  scratch.path("started") + "-it\n");
    return scratch;
  }

  std::string entry() {
    return makeEntry(std::string(name) + ".desktop", "DBusActivatable=true\nExec=" + makeProgram("") + "\n");
  }

  // Serves the application's connection until a call arrives, and returns its path, method and signature.
  std::string nextCall(const BusClient& application) {
    std::string call;
    EXPECT_TRUE(loop_.runUntil([&] {
      sd_bus_message* message = nullptr;
      if (sd_bus_process(application.bus(), &message) <= 0 || message == nullptr) return false;
      if (sd_bus_message_is_method_call(message, nullptr, nullptr) > 0)
        call = std::string(sd_bus_message_get_path(message)) + " " + sd_bus_message_get_interface(message) + "." +
               sd_bus_message_get_member(message) + " " + sd_bus_message_get_signature(message, 1);
      sd_bus_message_unref(message);
      return !call.empty();
    })) << "no call arrived";
    return call;
  }

  SessionBus bus_{withService(scratch_)};
  EnvironmentScope address_{"DBUS_SESSION_BUS_ADDRESS", bus_.address()};
};

TEST_F(OpenByBusTest, activatesARunningApplication) {
  BusClient application;
  application.take(name);
  workspace_.openApplication(entry());
  EXPECT_EQ(nextCall(application), "/com/example/Some_App2 org.freedesktop.Application.Activate a{sv}");
  workspace_.openApplication(entry());
  EXPECT_EQ(nextCall(application), "/com/example/Some_App2 org.freedesktop.Application.Activate a{sv}");
  EXPECT_FALSE(std::filesystem::exists(scratch_.path("started-it")));
  EXPECT_FALSE(std::filesystem::exists(scratch_.path("found"))) << "its command must not be started";
}

TEST_F(OpenByBusTest, theBusStartsTheApplicationIfNeeded) {
  workspace_.openApplication(entry());
  EXPECT_TRUE(loop_.runUntil([&] { return std::filesystem::exists(scratch_.path("started-it")); }));
  workspace_.openApplication(makeEntry("com.example.Missing.desktop", "DBusActivatable=true\nExec=true\n"));
  BusClient application;
  application.take(name);
  EXPECT_EQ(nextCall(application), "/com/example/Some_App2 org.freedesktop.Application.Activate a{sv}");
  EXPECT_FALSE(std::filesystem::exists(scratch_.path("found"))) << "its command must not be started";
}

TEST_F(OpenByBusTest, usesTheNextBusOnceTheFirstHasGone) {
  workspace_.openApplication(entry());
  EXPECT_TRUE(loop_.runUntil([&] { return std::filesystem::exists(scratch_.path("started-it")); }));
  bus_.stop();
  const SessionBus again(scratch_);
  BusClient application;
  application.take(name);
  SessionMainLoop mainLoop(loop_);
  bool isNoticed = false;
  mainLoop.after(0ms, [&] { isNoticed = true; });
  EXPECT_TRUE(loop_.runUntil([&] { return isNoticed; }));
  workspace_.openApplication(entry());
  EXPECT_EQ(nextCall(application), "/com/example/Some_App2 org.freedesktop.Application.Activate a{sv}");
}

TEST_F(OpenByBusTest, ignoresFailures) {
  workspace_.openApplication(makeEntry("com.example.Missing.desktop", "DBusActivatable=true\nExec=true\n"));
  workspace_.openApplication(makeEntry("no bus name.desktop", "DBusActivatable=true\nExec=true\n"));
  address_.set("unix:path=/nonexistent/bus");
  SessionWorkspace(loop_).openApplication(entry());
  address_.set(bus_.address());
  BusClient application;
  application.take(name);
  workspace_.openApplication(entry());
  EXPECT_EQ(nextCall(application), "/com/example/Some_App2 org.freedesktop.Application.Activate a{sv}");
}

}  // namespace
