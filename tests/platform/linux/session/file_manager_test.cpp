// Stand-ins for the desktop's programs: one for xdg-open, and a file manager on a private session bus.
#include "platform/linux/session/file_manager.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <systemd/sd-bus.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "platform/linux/session/session_workspace.h"
#include "platform/posix/file_descriptor.h"
#include "tests/platform/linux/session/bus_client.h"
#include "tests/platform/linux/session/poll_loop.h"
#include "tests/support/environment_scope.h"
#include "tests/support/scratch_folder.h"
#include "tests/support/session_bus.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using namespace std::chrono_literals;

enum class OnRequest { shows, refuses, ignores };

// Shows nothing, but records the requested addresses.
class StandInFileManager {
 public:
  explicit StandInFileManager(PollLoop& loop, OnRequest reaction = OnRequest::shows) : reaction_(reaction) {
    EXPECT_GE(sd_bus_add_filter(client_.bus(), nullptr, onMessage, this), 0);
    client_.take("org.freedesktop.FileManager1");
    watch_ = loop.watch(sd_bus_get_fd(client_.bus()), Readiness::readable, [this] {
      while (sd_bus_process(client_.bus(), nullptr) > 0) continue;
    });
  }

  std::vector<std::string> shown;
  int requests = 0;

 private:
  static int onMessage(sd_bus_message* message, void* self, sd_bus_error*) {
    const bool isRequest = sd_bus_message_is_method_call(message, nullptr, nullptr) > 0;
    return isRequest ? static_cast<StandInFileManager*>(self)->react(message) : 0;
  }

  int react(sd_bus_message* request) {
    ++requests;
    if (reaction_ == OnRequest::ignores) return 1;
    if (reaction_ == OnRequest::refuses) return 0;  // the library replies with an error
    EXPECT_STREQ(sd_bus_message_get_path(request), "/org/freedesktop/FileManager1");
    EXPECT_STREQ(sd_bus_message_get_interface(request), "org.freedesktop.FileManager1");
    EXPECT_STREQ(sd_bus_message_get_member(request), "ShowItems");
    EXPECT_STREQ(sd_bus_message_get_signature(request, 1), "ass");
    EXPECT_GT(sd_bus_message_enter_container(request, 'a', "s"), 0);
    const char* address = nullptr;
    while (sd_bus_message_read_basic(request, 's', &address) > 0) shown.emplace_back(address);
    EXPECT_GE(sd_bus_reply_method_return(request, nullptr), 0);
    return 1;
  }

  OnRequest reaction_;
  BusClient client_;
  std::unique_ptr<DescriptorWatch> watch_;
};

class FileManagerTest : public testing::Test {
 protected:
  FileManagerTest() {
    makeFile(scratch_.path("xdg-open"), "#!/bin/sh\nprintf '%s|' \"$@\" >> " + scratch_.path("opened") + "\n");
    makeFile(scratch_.path("opened"), "");
    std::filesystem::permissions(scratch_.path("xdg-open"), std::filesystem::perms::owner_all);
  }

  // Returns the targets that were opened up to now.
  std::string opened() const { return contentOf(scratch_.path("opened")); }

  // Waits until so many targets were opened, and returns them.
  std::string opened(std::ptrdiff_t count) {
    EXPECT_TRUE(loop_.runUntil([&] {
      const std::string targets = opened();
      return std::count(targets.begin(), targets.end(), '|') >= count;
    })) << "nothing was opened";
    return opened();
  }

  ScratchFolder scratch_;
  SessionBus bus_{scratch_};
  EnvironmentScope address_{"DBUS_SESSION_BUS_ADDRESS", bus_.address()};
  EnvironmentScope programs_{"PATH", scratch_.path() + ":/usr/bin:/bin"};
  PollLoop loop_;
  SessionWorkspace workspace_{loop_};
};

TEST_F(FileManagerTest, opensAddressesWithTheDesktop) {
  workspace_.openAddress("https://quillery.example.com/?a=1&b=$HOME#top");
  EXPECT_EQ(opened(1), "https://quillery.example.com/?a=1&b=$HOME#top|");
}

TEST_F(FileManagerTest, opensFoldersWithTheDesktop) {
  const std::string folder = scratch_.path("Quillery & more");
  std::filesystem::create_directory(folder);
  workspace_.openFolder(folder);
  EXPECT_EQ(opened(1), folder + "|");
}

TEST_F(FileManagerTest, opensTheFolderAboveAMissingOne) {
  workspace_.openFolder(scratch_.path("Library/Safari"));
  EXPECT_EQ(opened(1), scratch_.path() + "|");
}

TEST_F(FileManagerTest, ignoresWhatLooksLikeAnOption) {
  workspace_.openAddress("--version");
  workspace_.openAddress("");
  workspace_.openAddress("mailto:ann@example.com");
  EXPECT_EQ(opened(1), "mailto:ann@example.com|");
}

TEST_F(FileManagerTest, showsAFileInTheFileManager) {
  const StandInFileManager manager(loop_);
  workspace_.revealFile("/home/ann/Größe & 100 %#.plist");
  EXPECT_TRUE(loop_.runUntil([&] { return !manager.shown.empty(); }));
  workspace_.revealFile("/tmp");
  EXPECT_TRUE(loop_.runUntil([&] { return manager.shown.size() == 2; }));
  EXPECT_THAT(manager.shown, ElementsAre("file:///home/ann/Gr%C3%B6%C3%9Fe%20&%20100%20%25%23.plist", "file:///tmp"));
  EXPECT_EQ(opened(), "");
}

TEST_F(FileManagerTest, escapesOnlyWhatAUrlCannotHold) {
  const StandInFileManager manager(loop_);
  workspace_.revealFile("/az-AZ_09.~!$&'()*+,;=:@[]/\x01\t\x7F \"<>\\^`{|}?");
  EXPECT_TRUE(loop_.runUntil([&] { return !manager.shown.empty(); }));
  EXPECT_THAT(manager.shown,
              ElementsAre("file:///az-AZ_09.~!$&'()*+,;=:@[]/%01%09%7F%20%22%3C%3E%5C%5E%60%7B%7C%7D%3F"));
}

TEST_F(FileManagerTest, opensTheFolderIfThereIsNoFileManager) {
  workspace_.revealFile("/home/ann/Library/Bookmarks.plist");
  EXPECT_EQ(opened(1), "/home/ann/Library|");
}

TEST_F(FileManagerTest, opensTheFolderIfTheFileManagerRefuses) {
  const StandInFileManager manager(loop_, OnRequest::refuses);
  workspace_.revealFile("/home/ann/Library/Bookmarks.plist");
  EXPECT_EQ(opened(1), "/home/ann/Library|");
  EXPECT_EQ(manager.requests, 1);
  EXPECT_THAT(manager.shown, IsEmpty());
}

TEST_F(FileManagerTest, opensTheFolderOnceIfTheFileManagerHangs) {
  const StandInFileManager manager(loop_, OnRequest::ignores);
  FileManager impatient(loop_, 50ms);
  impatient.reveal("/home/ann/Library/Bookmarks.plist");
  EXPECT_EQ(opened(1), "/home/ann/Library|");
  EXPECT_EQ(manager.requests, 1);
  bus_.stop();
  impatient.reveal("/tmp/file");  // finds the bus gone, which fails the first call too
  EXPECT_EQ(opened(2), "/home/ann/Library|/tmp|");
}

TEST_F(FileManagerTest, opensTheFolderIfTheBusGoesAway) {
  const StandInFileManager manager(loop_, OnRequest::ignores);
  workspace_.revealFile("/home/ann/Library/Bookmarks.plist");
  EXPECT_TRUE(loop_.runUntil([&] { return manager.requests == 1; }));
  EXPECT_EQ(opened(), "");
  bus_.stop();
  EXPECT_EQ(opened(1), "/home/ann/Library|");
}

TEST_F(FileManagerTest, usesTheNextBusOnceTheFirstHasGone) {
  workspace_.revealFile("/home/ann/Library/Bookmarks.plist");
  EXPECT_EQ(opened(1), "/home/ann/Library|");
  bus_.stop();
  const SessionBus next(scratch_);
  const StandInFileManager manager(loop_);
  workspace_.revealFile("/tmp/file");  // finds the bus gone
  EXPECT_EQ(opened(2), "/home/ann/Library|/tmp|");
  workspace_.revealFile("/tmp/file");
  EXPECT_TRUE(loop_.runUntil([&] { return !manager.shown.empty(); }));
  EXPECT_THAT(manager.shown, ElementsAre("file:///tmp/file"));
}

TEST_F(FileManagerTest, opensTheFolderIfThereIsNoBus) {
  address_.set("unix:path=" + scratch_.path("no-bus"));
  workspace_.revealFile("/home/ann/Library/Bookmarks.plist");
  EXPECT_EQ(opened(1), "/home/ann/Library|");
}

// Listens at a path, and refuses its client as another user's bus does.
class RefusingBus {
 public:
  RefusingBus(PollLoop& loop, const std::string& path) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    path.copy(address.sun_path, sizeof address.sun_path - 1);
    EXPECT_EQ(bind(listener_.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
    EXPECT_EQ(listen(listener_.get(), 1), 0);
    watch_ = loop.watch(listener_.get(), Readiness::readable, [this] {
      connection_ = FileDescriptor(accept(listener_.get(), nullptr, nullptr));
      const std::string refusal = "REJECTED EXTERNAL\r\nERROR\r\nERROR\r\n";
      EXPECT_EQ(write(connection_.get(), refusal.data(), refusal.size()), static_cast<ssize_t>(refusal.size()));
    });
  }

 private:
  FileDescriptor listener_{socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0)};
  FileDescriptor connection_{-1};
  std::unique_ptr<DescriptorWatch> watch_;
};

TEST_F(FileManagerTest, opensTheFolderIfTheBusRefusesUs) {
  const RefusingBus bus(loop_, scratch_.path("refusing-bus"));
  address_.set("unix:path=" + scratch_.path("refusing-bus"));
  workspace_.revealFile("/home/ann/Library/Bookmarks.plist");
  EXPECT_EQ(opened(1), "/home/ann/Library|");
}

}  // namespace
