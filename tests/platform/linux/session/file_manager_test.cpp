// A program that stands in for the desktop's, and a file manager on a session bus of the test's own.
#include "platform/linux/session/file_manager.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDBusVirtualObject>
#include <filesystem>
#include <string>
#include <vector>

#include "platform/qt/qt_main_loop.h"
#include "platform/linux/session/session_workspace.h"
#include "tests/platform/qt/event_loop.h"
#include "tests/platform/linux/environment_scope.h"
#include "tests/platform/linux/scratch_folder.h"
#include "tests/support/session_bus.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

// Shows nothing, but notes what it is asked for, or refuses.
class StandInFileManager : private QDBusVirtualObject {
 public:
  explicit StandInFileManager(const std::string& address)
      : bus_(QDBusConnection::connectToBus(QString::fromStdString(address), "file manager")) {
    EXPECT_TRUE(bus_.registerVirtualObject("/org/freedesktop/FileManager1", this));
    EXPECT_TRUE(bus_.registerService("org.freedesktop.FileManager1"));
  }
  ~StandInFileManager() override { QDBusConnection::disconnectFromBus("file manager"); }
  StandInFileManager(const StandInFileManager&) = delete;
  StandInFileManager& operator=(const StandInFileManager&) = delete;

  std::vector<std::string> shown;
  bool refuses = false;

 private:
  QString introspect(const QString&) const override { return {}; }
  bool handleMessage(const QDBusMessage& message, const QDBusConnection& connection) override {
    if (refuses) return false;
    EXPECT_EQ(message.interface(), "org.freedesktop.FileManager1");
    EXPECT_EQ(message.member(), "ShowItems");
    EXPECT_EQ(message.signature(), "ass");
    for (const QString& address : message.arguments().value(0).toStringList()) shown.push_back(address.toStdString());
    return connection.send(message.createReply());
  }

  QDBusConnection bus_;
};

class FileManagerTest : public testing::Test {
 protected:
  FileManagerTest() {
    makeFile(scratch_.path("xdg-open"), "#!/bin/sh\nprintf '%s|' \"$@\" > " + scratch_.path("part") + "; mv " +
                                            scratch_.path("part") + " " + scratch_.path("opened") + "\n");
    std::filesystem::permissions(scratch_.path("xdg-open"), std::filesystem::perms::owner_all);
  }

  std::string opened() {
    EXPECT_TRUE(runUntil([&] { return std::filesystem::exists(scratch_.path("opened")); })) << "nothing was opened";
    return contentOf(scratch_.path("opened"));
  }

  ScratchFolder scratch_;
  SessionBus bus_{scratch_};
  EnvironmentScope address_{"DBUS_SESSION_BUS_ADDRESS", bus_.address()};
  EnvironmentScope programs_{"PATH", scratch_.path() + ":/usr/bin:/bin"};
  QtMainLoop loop_;
  SessionWorkspace workspace_{loop_};
};

TEST_F(FileManagerTest, addressesAreOpenedByTheDesktop) {
  workspace_.openAddress("https://quillery.example.com/?a=1&b=$HOME#top");
  EXPECT_EQ(opened(), "https://quillery.example.com/?a=1&b=$HOME#top|");
}

TEST_F(FileManagerTest, foldersAreOpenedByTheDesktop) {
  workspace_.openFolder("/home/ann/Library/Quillery & more");
  EXPECT_EQ(opened(), "/home/ann/Library/Quillery & more|");
}

TEST_F(FileManagerTest, whatLooksLikeAnOptionIsIgnored) {
  workspace_.openAddress("--version");
  workspace_.openAddress("");
  workspace_.openAddress("mailto:ann@example.com");
  EXPECT_EQ(opened(), "mailto:ann@example.com|");
}

TEST_F(FileManagerTest, aFileIsShownByTheFileManager) {
  StandInFileManager manager(bus_.address());
  workspace_.revealFile("/home/ann/Größe & 100 %#.plist");
  EXPECT_TRUE(runUntil([&] { return !manager.shown.empty(); }));
  workspace_.revealFile("/tmp");
  EXPECT_TRUE(runUntil([&] { return manager.shown.size() == 2; }));
  EXPECT_THAT(manager.shown, ElementsAre("file:///home/ann/Gr%C3%B6%C3%9Fe%20&%20100%20%25%23.plist", "file:///tmp"));
  EXPECT_FALSE(std::filesystem::exists(scratch_.path("opened")));
}

TEST_F(FileManagerTest, withoutOneTheFilesFolderIsOpened) {
  workspace_.revealFile("/home/ann/Library/Bookmarks.plist");
  EXPECT_EQ(opened(), "/home/ann/Library|");
}

TEST_F(FileManagerTest, ifItRefusesTheFilesFolderIsOpened) {
  StandInFileManager manager(bus_.address());
  manager.refuses = true;
  workspace_.revealFile("/home/ann/Library/Bookmarks.plist");
  EXPECT_EQ(opened(), "/home/ann/Library|");
  EXPECT_THAT(manager.shown, IsEmpty());
}

TEST_F(FileManagerTest, withoutABusTheFilesFolderIsOpened) {
  address_.set("unix:path=" + scratch_.path("no-bus"));
  workspace_.revealFile("/home/ann/Library/Bookmarks.plist");
  EXPECT_EQ(opened(), "/home/ann/Library|");
}

}  // namespace
