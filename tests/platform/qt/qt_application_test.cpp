// The application with its real loop, real signals and a private session bus.
#include "platform/qt/qt_application.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDBusPendingCall>
#include <QSemaphore>
#include <QTest>
#include <QThread>
#include <QTimer>
#include <atomic>
#include <csignal>
#include <cstdlib>
#include <fstream>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "platform/linux/object_path.h"
#include "platform/linux/session/instance_lock.h"
#include "platform/product.h"
#include "platform/qt/application_service.h"
#include "platform/qt/qt_event_loop.h"
#include "platform/qt/qt_user_interface.h"
#include "platform/qt/qt_window.h"
#include "tests/platform/qt/dialog_driver.h"
#include "tests/platform/qt/run_until.h"
#include "tests/support/environment_scope.h"
#include "tests/support/program.h"
#include "tests/support/scratch_folder.h"
#include "tests/support/session_bus.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using namespace std::chrono_literals;

const QString identifier = QString::fromStdString(std::string(product::bundleIdentifier));

// Records its calls, and then runs the test's function for them.
class Delegate : public ApplicationDelegate {
 public:
  void applicationDidFinishLaunching() override {
    calls.emplace_back("launched");
    launched();
  }
  bool applicationShouldTerminate() override {
    calls.emplace_back("terminate?");
    return mayTerminate();
  }
  bool applicationShouldHandleReopen(bool hasVisibleWindows) override {
    calls.emplace_back(hasVisibleWindows ? "reopened with windows" : "reopened");
    reopened();
    return true;
  }

  std::vector<std::string> calls;
  std::function<void()> launched = [] {};
  std::function<bool()> mayTerminate = [] { return true; };
  std::function<void()> reopened = [] {};
};

class QtApplicationTest : public testing::Test {
 protected:
  QtApplicationTest() { application_.setDelegate(delegate_); }

  // Fails the test if the application does not end within 20 seconds.
  void run() { run(application_); }
  static void run(QtApplication& application) {
    QTimer timeout;
    QObject::connect(&timeout, &QTimer::timeout, &timeout, [] {
      ADD_FAILURE() << "the application does not end";
      QApplication::exit();
    });
    timeout.start(20s);
    application.run();
  }

  ScratchFolder scratch_;
  EnvironmentScope configuration_{"XDG_CONFIG_HOME", scratch_.path("config")};
  std::shared_ptr<Delegate> delegate_ = std::make_shared<Delegate>();
  QtEventLoop loop_;
  QtApplication application_{*qApp, loop_};
  QtUserInterface userInterface_{application_};
};

TEST_F(QtApplicationTest, isIdentifiedToTheDesktop) {
  EXPECT_EQ(QGuiApplication::desktopFileName(), identifier);
  EXPECT_EQ(QGuiApplication::applicationDisplayName().toStdString(), product::name);
  EXPECT_FALSE(QGuiApplication::quitOnLastWindowClosed());
  EXPECT_FALSE(QApplication::windowIcon().isNull());
}

TEST_F(QtApplicationTest, theLoopCallsTheDelegateFirst) {
  bool isRunning = false;
  delegate_->launched = [&] {
    EXPECT_TRUE(isRunning);
    application_.terminate();
  };
  isRunning = true;
  run();
  EXPECT_THAT(delegate_->calls, ElementsAre("launched", "terminate?"));
  EXPECT_TRUE(application_.isTerminating());
}

TEST_F(QtApplicationTest, aDelegateCanRefuseToTerminate) {
  int refusals = 0;
  delegate_->mayTerminate = [&] { return ++refusals > 2; };
  delegate_->launched = [&] {
    application_.terminate();
    EXPECT_FALSE(application_.isTerminating());
    QTimer::singleShot(0, [&] { application_.terminate(); });
    QTimer::singleShot(1, [&] { application_.terminate(); });
  };
  run();
  EXPECT_THAT(delegate_->calls, ElementsAre("launched", "terminate?", "terminate?", "terminate?"));
}

TEST_F(QtApplicationTest, aDelegateCanRefuseARelaunch) {
  delegate_->mayTerminate = [&] { return delegate_->calls.size() > 2; };
  delegate_->launched = [&] {
    EXPECT_FALSE(application_.relaunch());
    application_.terminate();
  };
  run();
  EXPECT_THAT(delegate_->calls, ElementsAre("launched", "terminate?", "terminate?"));
}

// This program runs the test in a process of its own, which relaunches it.
TEST_F(QtApplicationTest, aRelaunchKeepsTheProcess) {
  const char* const record = std::getenv("QUILLERY_RELAUNCHES");
  if (record == nullptr) {
    const Environment environment = {{"GTEST_FILTER", "QtApplicationTest.aRelaunchKeepsTheProcess"},
                                     {"QUILLERY_RELAUNCHES", scratch_.path("record")}};
    const Ending ending = ::run("/proc/self/exe", {}, environment);
    EXPECT_EQ(ending.status, 0) << ending.output;
    const std::string processes = contentOf(scratch_.path("record"));
    EXPECT_EQ(processes.substr(0, processes.size() / 2), processes.substr(processes.size() / 2));
    return;
  }
  const bool isRelaunched = std::ifstream(record).good();
  std::ofstream(record, std::ios::app) << getpid() << '\n';
  if (isRelaunched) return;
  delegate_->launched = [&] { EXPECT_TRUE(application_.relaunch()); };
  run();
  FAIL() << "the program was not replaced";
}

TEST_F(QtApplicationTest, holdsTheDelegateWeakly) {
  std::weak_ptr<Delegate> observer = delegate_;
  delegate_.reset();
  EXPECT_TRUE(observer.expired());
  QTimer::singleShot(0, [&] { application_.terminate(); });
  run();
}

TEST_F(QtApplicationTest, doesNotRunOnceTerminated) {
  application_.terminate();
  run();
  EXPECT_THAT(delegate_->calls, ElementsAre("terminate?"));
}

TEST_F(QtApplicationTest, terminatingEndsNestedDialogs) {
  std::vector<std::string> steps;
  delegate_->launched = [&] {
    withNextDialog([&](QDialog&) {
      withNextDialog([&](QDialog&) { application_.terminate(); });
      EXPECT_EQ(userInterface_.runModal({"Inner", "", {"Go on", "Cancel", "Help"}}), 1U);
      steps.emplace_back("inner");
    });
    EXPECT_EQ(userInterface_.runModal({"Outer", "", {"Go on", "Stop"}}), 1U);
    steps.emplace_back("outer");
    userInterface_.runModal({"One more", "", {}});
    steps.emplace_back("more");
  };
  run();
  EXPECT_THAT(steps, ElementsAre("inner", "outer", "more"));
}

TEST_F(QtApplicationTest, doesNotAskTheDelegateTwiceAtOnce) {
  delegate_->mayTerminate = [&] {
    withNextDialog([&](QDialog& dialog) {
      application_.terminate();
      EXPECT_TRUE(dialog.isVisible());
      QTest::keyClick(&dialog, Qt::Key_Return);
    });
    return userInterface_.runModal({"Quit?", "", {"Quit", "Cancel"}}) == 0;
  };
  delegate_->launched = [&] { application_.terminate(); };
  run();
  EXPECT_THAT(delegate_->calls, ElementsAre("launched", "terminate?"));
}

TEST_F(QtApplicationTest, quitsDespiteAWindowThatCannotBeClosed) {
  QtWindow window({100, 100, "Title"});
  delegate_->launched = [&] {
    window.makeKeyAndOrderFront();
    QCoreApplication::quit();  // as the session manager does
  };
  run();
  EXPECT_THAT(delegate_->calls, ElementsAre("launched", "terminate?"));
}

TEST_F(QtApplicationTest, keepsRunningWithoutWindows) {
  QtWindow window({100, 100, "Title", true});
  delegate_->launched = [&] {
    window.makeKeyAndOrderFront();
    window.widget().close();
    QTimer::singleShot(0, [&] {  // after the events that closing has posted
      EXPECT_FALSE(application_.isTerminating());
      application_.terminate();
    });
  };
  run();
}

TEST_F(QtApplicationTest, signalsTerminateIt) {
  for (const int number : {SIGTERM, SIGINT}) {
    struct sigaction before {};
    sigaction(number, nullptr, &before);
    QtApplication application(*qApp, loop_);
    application.setDelegate(delegate_);
    delegate_->calls.clear();
    delegate_->launched = [&] {
      EXPECT_EQ(std::raise(number), 0);
      EXPECT_THAT(delegate_->calls, ElementsAre("launched")) << "only the loop reacts";
    };
    run(application);
    EXPECT_THAT(delegate_->calls, ElementsAre("launched", "terminate?"));
    struct sigaction after {};
    sigaction(number, nullptr, &after);
    EXPECT_EQ(after.sa_handler, before.sa_handler);
  }
}

TEST_F(QtApplicationTest, aSignalEndsDialogs) {
  delegate_->launched = [&] {
    withNextDialog([](QDialog&) { EXPECT_EQ(std::raise(SIGTERM), 0); });
    userInterface_.runModal({"Text", "", {"One", "Two"}});
  };
  run();
  EXPECT_TRUE(application_.isTerminating());
}

class QtApplicationOnABusTest : public QtApplicationTest {
 protected:
  QtApplicationOnABusTest() : client_(QDBusConnection::connectToBus(bus_.address().c_str(), "client")) {
    EXPECT_TRUE(client_.isConnected());
  }
  ~QtApplicationOnABusTest() override { QDBusConnection::disconnectFromBus("client"); }

  QDBusPendingCall call(const char* method, const QVariantList& arguments) {
    QDBusMessage message =
        QDBusMessage::createMethodCall(identifier, QString::fromStdString(objectPath(identifier.toStdString())),
                                       "org.freedesktop.Application", method);
    message.setArguments(arguments);
    return client_.asyncCall(message);
  }
  // Called by the loop, and runs it until the reply arrives. Returns true unless the reply is an error.
  bool succeeds(const QDBusPendingCall& pending) {
    EXPECT_TRUE(runUntil([&] { return pending.isFinished(); }));
    return pending.reply().type() == QDBusMessage::ReplyMessage;
  }

  SessionBus bus_{scratch_};
  EnvironmentScope address_{"DBUS_SESSION_BUS_ADDRESS", bus_.address()};
  QDBusConnection client_;
};

const QVariantMap platformData;

TEST_F(QtApplicationOnABusTest, ownsItsNameWhileItRuns) {
  EXPECT_FALSE(client_.interface()->isServiceRegistered(identifier));
  delegate_->launched = [&] {
    EXPECT_TRUE(client_.interface()->isServiceRegistered(identifier));
    application_.terminate();
  };
  run();
  EXPECT_FALSE(client_.interface()->isServiceRegistered(identifier));
}

// Another instance on the same bus, with a loop of its own.
class FirstInstance : public QThread {
 public:
  FirstInstance() {
    start();
    ready_.acquire();
  }
  ~FirstInstance() override { end(); }
  void end() {
    quit();
    wait();
  }
  int timesOpened() const { return timesOpened_; }

 private:
  void run() override {
    const ApplicationService service(identifier.toStdString(), {.reopen = [this] { ++timesOpened_; }, .quit = [] {}});
    ready_.release();
    exec();
  }

  QSemaphore ready_;
  std::atomic<int> timesOpened_ = 0;
};

TEST_F(QtApplicationOnABusTest, aSecondInstanceOpensTheFirst) {
  FirstInstance first;
  testing::internal::CaptureStderr();
  run();
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
  first.end();
  EXPECT_EQ(first.timesOpened(), 1);
  EXPECT_THAT(delegate_->calls, IsEmpty());
  delegate_->launched = [&] { application_.terminate(); };
  run();
  EXPECT_THAT(delegate_->calls, ElementsAre("launched", "terminate?")) << "the first has ended";
}

TEST_F(QtApplicationOnABusTest, aSecondInstanceReportsAFirstThatDoesNotReply) {
  const NameOwner first(identifier.toUtf8().constData());
  testing::internal::CaptureStderr();
  run();
  EXPECT_THAT(delegate_->calls, IsEmpty());
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "quillery: it is running already, and does not reply\n");
}

TEST_F(QtApplicationOnABusTest, reopeningCallsTheDelegateThenThePlatform) {
  application_.setReopened([&] { delegate_->calls.emplace_back("platform"); });
  QtWindow window({100, 100, "Title"});
  delegate_->launched = [&] {
    EXPECT_TRUE(succeeds(call("Activate", {platformData})));
    EXPECT_TRUE(runUntil([&] { return delegate_->calls.size() == 3; }));
    window.makeKeyAndOrderFront();
    EXPECT_TRUE(succeeds(call("Open", {QStringList{"file:///tmp"}, platformData})));
    EXPECT_TRUE(runUntil([&] { return delegate_->calls.size() == 5; }));
    application_.terminate();
  };
  run();
  EXPECT_THAT(delegate_->calls,
              ElementsAre("launched", "reopened", "platform", "reopened with windows", "platform", "terminate?"));
}

TEST_F(QtApplicationOnABusTest, reopeningRestoresAMinimisedAlert) {
  QtWindow window({100, 100, "Title"});
  delegate_->launched = [&] {
    window.makeKeyAndOrderFront();
    withNextDialog([&](QDialog& dialog) {
      dialog.showMinimized();
      call("Activate", {platformData});
      EXPECT_TRUE(runUntil([&] { return !dialog.isMinimized() && QApplication::activeWindow() == &dialog; }));
      application_.terminate();
    });
    userInterface_.runModal({"Text", "", {"One", "Two"}});
  };
  run();
}

TEST_F(QtApplicationOnABusTest, repliesBeforeTheDelegateShowsADialog) {
  delegate_->reopened = [&] { userInterface_.runModal({"Text", "", {"One", "Two"}}); };
  delegate_->launched = [&] {
    const QDBusPendingCall pending = call("Activate", {platformData});
    withNextDialog([&, pending](QDialog&) {
      EXPECT_TRUE(succeeds(pending));
      application_.terminate();
    });
  };
  run();
}

TEST_F(QtApplicationOnABusTest, theActionQuitTerminatesIt) {
  delegate_->launched = [&] { call("ActivateAction", {"quit", QVariantList(), platformData}); };
  run();
  EXPECT_THAT(delegate_->calls, ElementsAre("launched", "terminate?"));
}

TEST_F(QtApplicationOnABusTest, anUnknownRequestIsAnError) {
  delegate_->launched = [&] {
    EXPECT_FALSE(succeeds(call("ActivateAction", {"restart", QVariantList(), platformData})));
    EXPECT_FALSE(succeeds(call("Activate", {"wrong"})));
    EXPECT_FALSE(succeeds(call("Explode", {})));
    application_.terminate();
  };
  run();
  EXPECT_THAT(delegate_->calls, ElementsAre("launched", "terminate?"));
}

TEST_F(QtApplicationOnABusTest, runsWithoutABus) {
  address_.set("unix:path=" + scratch_.path("no-bus"));
  testing::internal::CaptureStderr();
  delegate_->launched = [&] { application_.terminate(); };
  run();
  EXPECT_THAT(delegate_->calls, ElementsAre("launched", "terminate?"));
  EXPECT_THAT(testing::internal::GetCapturedStderr(), IsEmpty());
}

TEST_F(QtApplicationOnABusTest, runsOnlyOnceForAUserWithoutABus) {
  address_.set("unix:path=" + scratch_.path("no-bus"));
  {
    const InstanceLock first(scratch_.path("config"));
    testing::internal::CaptureStderr();
    run();
    EXPECT_THAT(delegate_->calls, IsEmpty());
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "quillery: it is running already\n");
  }
  delegate_->launched = [&] { application_.terminate(); };
  run();
  EXPECT_THAT(delegate_->calls, ElementsAre("launched", "terminate?")) << "the first has ended";
}

TEST_F(QtApplicationOnABusTest, describesItsInterface) {
  delegate_->launched = [&] {
    QDBusMessage message = QDBusMessage::createMethodCall(identifier, "/com/fenwarde/quillery",
                                                          "org.freedesktop.DBus.Introspectable", "Introspect");
    const QDBusPendingCall pending = client_.asyncCall(message);
    EXPECT_TRUE(succeeds(pending));
    EXPECT_TRUE(pending.reply().arguments().value(0).toString().contains("\"org.freedesktop.Application\""));
    application_.terminate();
  };
  run();
}

TEST(ObjectPath, replacesDotsAndHyphens) {
  EXPECT_EQ(objectPath("com.fenwarde.quillery"), "/com/fenwarde/quillery");
  EXPECT_EQ(objectPath("org.example.Two-Words"), "/org/example/Two_Words");
}

}  // namespace
