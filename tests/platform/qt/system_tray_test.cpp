// A panel on a private session bus. It replies from its own thread, as another process would.
#include "platform/qt/system_tray.h"

#include <gtest/gtest.h>

#include <QDBusMessage>
#include <QDBusVariant>
#include <QDBusVirtualObject>
#include <QThread>
#include <atomic>
#include <string>

#include "platform/qt/qt_event_loop.h"
#include "tests/platform/qt/run_until.h"
#include "tests/support/environment_scope.h"
#include "tests/support/scratch_folder.h"
#include "tests/support/session_bus.h"

namespace {

constexpr const char* watcherName = "org.kde.StatusNotifierWatcher";
constexpr const char* watcherPath = "/StatusNotifierWatcher";

class Panel : private QDBusVirtualObject {
 public:
  Panel(const std::string& address, bool hasHost)
      : hasHost_(hasHost), bus_(QDBusConnection::connectToBus(QString::fromStdString(address), "panel")) {
    moveToThread(&thread_);
    thread_.start();
    EXPECT_TRUE(bus_.registerVirtualObject(watcherPath, this));
    EXPECT_TRUE(bus_.registerService(watcherName));
  }
  ~Panel() override {
    bus_.unregisterObject(watcherPath);
    QDBusConnection::disconnectFromBus("panel");
    thread_.quit();
    thread_.wait();
  }
  Panel(const Panel&) = delete;
  Panel& operator=(const Panel&) = delete;

  bool wasQueried() const { return wasQueried_; }
  void registerHost() {
    hasHost_ = true;
    EXPECT_TRUE(bus_.send(QDBusMessage::createSignal(watcherPath, watcherName, "StatusNotifierHostRegistered")));
  }

 private:
  QString introspect(const QString&) const override { return {}; }
  bool handleMessage(const QDBusMessage& message, const QDBusConnection& connection) override {
    if (message.member() != "Get" || message.arguments().value(1) != "IsStatusNotifierHostRegistered") return false;
    wasQueried_ = true;
    return connection.send(message.createReply(QVariant::fromValue(QDBusVariant(hasHost_.load()))));
  }

  std::atomic<bool> hasHost_;
  std::atomic<bool> wasQueried_ = false;
  QThread thread_;
  QDBusConnection bus_;
};

class SystemTrayTest : public testing::Test {
 protected:
  void await(SystemTray& tray) {
    tray.await([this] { ++arrivals_; });
  }

  ScratchFolder scratch_;
  SessionBus bus_{scratch_};
  EnvironmentScope address_{"DBUS_SESSION_BUS_ADDRESS", bus_.address()};
  QtEventLoop loop_;
  int arrivals_ = 0;
};

TEST_F(SystemTrayTest, isAvailableIfAPanelHasAHost) {
  SystemTray tray(loop_);
  EXPECT_FALSE(tray.isAvailable());
  {
    const Panel panel(bus_.address(), true);
    EXPECT_TRUE(tray.isAvailable());
  }
  EXPECT_FALSE(tray.isAvailable());
  const Panel panel(bus_.address(), false);
  EXPECT_FALSE(tray.isAvailable()) << "the service exists, but nothing that shows icons";
  EXPECT_TRUE(panel.wasQueried());
}

TEST_F(SystemTrayTest, noticesALaterPanel) {
  SystemTray tray(loop_);
  await(tray);
  const Panel panel(bus_.address(), true);
  EXPECT_TRUE(runUntil([&] { return arrivals_ > 0; }));
}

TEST_F(SystemTrayTest, noticesALaterHostOnce) {
  SystemTray tray(loop_);
  await(tray);
  Panel panel(bus_.address(), false);
  EXPECT_TRUE(runUntil([&] { return panel.wasQueried(); }));
  EXPECT_EQ(arrivals_, 0);
  panel.registerHost();
  EXPECT_TRUE(runUntil([&] { return arrivals_ > 0; }));
  panel.registerHost();
  SystemTray other(loop_);
  int arrivalsThere = 0;
  other.await([&] { ++arrivalsThere; });
  EXPECT_TRUE(runUntil([&] { return arrivalsThere > 0; }));
  EXPECT_EQ(arrivals_, 1);
}

TEST_F(SystemTrayTest, isUnavailableWithoutABus) {
  address_.set("disabled:");
  SystemTray tray(loop_);
  await(tray);
  EXPECT_FALSE(tray.isAvailable());
  EXPECT_EQ(arrivals_, 0);
}

}  // namespace
