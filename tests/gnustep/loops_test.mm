// Timers, observers, alerts, the application and the updater: their lifetimes, also in nested loops, and what they
// call.
#import <AppKit/AppKit.h>
#import <Sparkle/Sparkle.h>
#include <gtest/gtest.h>

#include <chrono>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "platform/macos/conversions.h"
#include "platform/macos/desktop/appkit_application.h"
#include "platform/macos/desktop/appkit_user_interface.h"
#include "platform/macos/desktop/callback.h"
#include "platform/macos/desktop/main_run_loop.h"
#include "platform/macos/desktop/notification_observer.h"
#include "platform/macos/desktop/sparkle_updater.h"
#include "platform/platform.h"
#include "tests/gnustep/instances.h"
#include "tests/support/environment_scope.h"

// What GNUstep's protocol does not have.
@protocol NSApplicationDelegateOfMacOS12
- (BOOL)applicationSupportsSecureRestorableState:(NSApplication*)application;
@end

namespace {

using namespace std::chrono_literals;

// --- Timers ---

// GNUstep keeps an ended timer until its run loop next looks at it.
class TimerTest : public testing::Test {
 protected:
  void expectNoTimers() {
    EXPECT_TRUE(runUntil([&] { return held_.use_count() == 1; }));
  }

  MainRunLoop loop_;
  const std::shared_ptr<int> held_ = std::make_shared<int>(5);
  int fired_ = 0;
};

TEST_F(TimerTest, firesOnceAtItsDateAndReleasesItsHandler) {
  const Instant date = loop_.now() + 20ms;
  const auto timer = loop_.timerAt(date, [this, held = held_](Timer& self) {
    EXPECT_FALSE(self.isValid());
    ++fired_;
  });
  EXPECT_TRUE(timer->isValid());
  EXPECT_TRUE(runUntil([&] { return fired_ > 0; }));
  EXPECT_GE(loop_.now(), date - 2ms);
  EXPECT_FALSE(timer->isValid());
  expectNoTimers();
  EXPECT_EQ(fired_, 1);
}

TEST_F(TimerTest, firesThoughNobodyKeepsIt) {
  loop_.timerAt(loop_.now() + 5ms, [this, held = held_](Timer&) { ++fired_; });
  loop_.after(10ms, [this, held = held_] { ++fired_; });
  EXPECT_TRUE(runUntil([&] { return fired_ == 2; }));
  expectNoTimers();
}

TEST_F(TimerTest, repeatsUntilItsHandlerInvalidatesIt) {
  loop_.repeatingTimer(1ms, [this, held = held_](Timer& timer) {
    EXPECT_TRUE(timer.isValid());
    if (++fired_ < 3) return;
    timer.invalidate();
    timer.invalidate();
    EXPECT_FALSE(timer.isValid());
    EXPECT_EQ(*held, 5) << "the handler lasts until it returns";
  });
  EXPECT_TRUE(runUntil([&] { return fired_ == 3; }));
  turn();
  EXPECT_EQ(fired_, 3);
  expectNoTimers();
}

TEST_F(TimerTest, mayBeInvalidatedBeforeItFires) {
  const auto once = loop_.timerAt(loop_.now() + 5ms, [this, held = held_](Timer&) { ++fired_; });
  const auto repeating = loop_.repeatingTimer(5ms, [this, held = held_](Timer&) { ++fired_; });
  once->invalidate();
  repeating->invalidate();
  EXPECT_EQ(held_.use_count(), 1) << "the handlers are released at once";
  std::this_thread::sleep_for(10ms);
  turn();
  EXPECT_EQ(fired_, 0);
}

TEST_F(TimerTest, mayBeOwnedByItsHandler) {
  auto place = std::make_shared<std::shared_ptr<Timer>>();
  *place = loop_.repeatingTimer(1ms, [this, place, held = held_](Timer&) {
    if (++fired_ == 2) (*place)->invalidate();
  });
  place = nullptr;
  EXPECT_TRUE(runUntil([&] { return fired_ == 2; }));
  expectNoTimers();
}

TEST_F(TimerTest, doesNotFireInsideItsOwnHandler) {
  loop_.repeatingTimer(1ms, [this, held = held_](Timer& timer) {
    ++fired_;
    EXPECT_TRUE(runUntil([end = loop_.now() + 10ms, this] { return loop_.now() > end; }));
    EXPECT_EQ(fired_, 1);
    timer.invalidate();
  });
  EXPECT_TRUE(runUntil([&] { return fired_ == 1; }));
  expectNoTimers();
}

TEST_F(TimerTest, endsInANestedLoopOfItsHandler) {
  std::shared_ptr<Timer> timer = loop_.repeatingTimer(1ms, [this, &timer, held = held_](Timer&) {
    ++fired_;
    loop_.post([&timer] {
      timer->invalidate();
      timer = nullptr;
    });
    EXPECT_TRUE(runUntil([&] { return timer == nullptr; }));
    turn();
    EXPECT_EQ(*held, 5);
  });
  EXPECT_TRUE(runUntil([&] { return fired_ == 1 && timer == nullptr; }));
  expectNoTimers();
}

TEST_F(TimerTest, keepsItsDateWhenTheClockIsSet) {
  const auto timer = loop_.timerAt(loop_.now() + 30ms, [this, held = held_](Timer&) { ++fired_; });
  [NSNotificationCenter.defaultCenter postNotificationName:NSSystemClockDidChangeNotification object:nil];
  turn();
  EXPECT_EQ(fired_, 0);
  EXPECT_TRUE(runUntil([&] { return fired_ == 1; }));
  [NSNotificationCenter.defaultCenter postNotificationName:NSSystemClockDidChangeNotification object:nil];
  turn();
  EXPECT_EQ(fired_, 1);
  expectNoTimers();
}

TEST_F(TimerTest, isForgottenIfTheClockIsSetAfterItsEnd) {
  auto timer = loop_.timerAt(loop_.now() + 1h, [this, held = held_](Timer&) { ++fired_; });
  [NSNotificationCenter.defaultCenter postNotificationName:NSSystemClockDidChangeNotification object:nil];
  timer->invalidate();
  timer = nullptr;
  turn();
  expectNoTimers();
}

TEST_F(TimerTest, postedWorkRunsInOrderAndInNestedLoops) {
  std::vector<int> ran;
  loop_.post([&, held = held_] {
    loop_.post([&] { ran.push_back(3); });
    EXPECT_TRUE(runUntil([&] { return ran.size() == 2; }));
    ran.push_back(1);
  });
  loop_.post([&, held = held_] { ran.push_back(2); });
  EXPECT_TRUE(runUntil([&] { return ran.size() == 3; }));
  EXPECT_EQ(ran, (std::vector<int>{2, 3, 1}));
  expectNoTimers();
}

// --- Observers ---

class ObserverTest : public testing::Test {
 protected:
  static void post() { [NSNotificationCenter.defaultCenter postNotificationName:@"Some" object:nil]; }
  Observation observe(std::function<void()> handler) {
    return observeNotifications(NSNotificationCenter.defaultCenter, @"Some",
                                [handler = std::move(handler), held = held_](NSNotification* notification) {
                                  EXPECT_EQ(textOf(notification.name), "Some");
                                  handler();
                                });
  }
  void TearDown() override {
    turn();
    EXPECT_EQ(held_.use_count(), 1);
    EXPECT_EQ(instancesOf(@"NotificationReceiver"), before_);
  }

  const std::shared_ptr<int> held_ = std::make_shared<int>();
  const int before_ = instancesOf(@"NotificationReceiver");
  int called_ = 0;
};

TEST_F(ObserverTest, isCalledSoonForEachNotification) {
  @autoreleasepool {
    const Observation observation = observe([this] { ++called_; });
    post();
    EXPECT_EQ(called_, 0) << "not inside the call that posts it";
    post();
    EXPECT_TRUE(runUntil([&] { return called_ == 2; }));
  }
  post();
  turn();
  EXPECT_EQ(called_, 2) << "released observations are silent";
}

TEST_F(ObserverTest, isSilentIfReleasedBeforeDelivery) {
  @autoreleasepool {
    Observation observation = observe([this] { ++called_; });
    post();
    observation = nullptr;
    turn();
    EXPECT_EQ(called_, 0);
  }
}

TEST_F(ObserverTest, mayReleaseItselfInItsHandler) {
  @autoreleasepool {
    Observation observation;
    observation = observe([&, held = held_] {
      observation = nullptr;
      turn();
      EXPECT_GT(held.use_count(), 1);
      ++called_;
    });
    post();
    post();
    EXPECT_TRUE(runUntil([&] { return called_ > 0; }));
    turn();
    EXPECT_EQ(called_, 1);
  }
}

TEST_F(ObserverTest, isCalledOnTheMainThread) {
  @autoreleasepool {
    std::thread::id thread;
    const Observation observation = observe([&] {
      thread = std::this_thread::get_id();
      ++called_;
    });
    std::thread([] {
      @autoreleasepool {
        post();
      }
    }).join();
    EXPECT_TRUE(runUntil([&] { return called_ > 0; }));
    EXPECT_EQ(thread, std::this_thread::get_id());
  }
}

TEST_F(ObserverTest, isCalledInANestedLoopOfAHandler) {
  @autoreleasepool {
    const Observation observation = observe([this] {
      if (++called_ > 1) return;
      post();
      EXPECT_TRUE(runUntil([&] { return called_ == 2; }));
    });
    post();
    EXPECT_TRUE(runUntil([&] { return called_ == 2; }));
  }
}

// --- Alerts ---

// tests/gnustep/scenarios_test.py answers alerts with keys of the display.
class AlertTest : public testing::Test {
 protected:
  // Shows an alert, and answers it when it is shown, or ends it after a few seconds. GNUstep looks for posted events
  // only after a timer has fired.
  static std::size_t run(const std::vector<std::string>& buttons, const std::function<void(NSWindow*)>& answer) {
    NSDate* const end = [NSDate dateWithTimeIntervalSinceNow:5];
    NSTimer* const timer = [NSTimer timerWithTimeInterval:0.01
                                                  repeats:YES
                                                    block:^(NSTimer*) {
                                                      if (end.timeIntervalSinceNow > 0) return;
                                                      ADD_FAILURE() << "not answered";
                                                      [NSApp stopModal];
                                                      wake();
                                                    }];
    [NSRunLoop.mainRunLoop addTimer:timer forMode:NSModalPanelRunLoopMode];
    [NSRunLoop.mainRunLoop performInModes:@[ NSModalPanelRunLoopMode ]
                                    block:^{
                                      answer(NSApp.modalWindow);
                                      wake();
                                    }];
    const std::size_t result = AppKitUserInterface().runModal({"Mëssage", "Informätion", buttons});
    [timer invalidate];
    return result;
  }

  static void press(NSWindow* window, const std::string& title) {
    for (NSView* view in [window.contentView subviews])
      if ([view isKindOfClass:[NSButton class]] && textOf([static_cast<NSButton*>(view) title]) == title)
        return [static_cast<NSButton*>(view) performClick:nil];
    ADD_FAILURE() << "no button " << title;
  }

  // The modal loop ends after an event.
  static void wake() {
    [NSApp postEvent:[NSEvent otherEventWithType:NSApplicationDefined
                                        location:NSZeroPoint
                                   modifierFlags:0
                                       timestamp:0
                                    windowNumber:0
                                         context:nil
                                         subtype:0
                                           data1:0
                                           data2:0]
             atStart:NO];
  }
};

TEST_F(AlertTest, returnsTheIndexOfThePressedButton) {
  @autoreleasepool {
    const std::vector<std::string> buttons = {"First", "Second", "Third"};
    for (std::size_t index = 0; index < buttons.size(); ++index)
      EXPECT_EQ(run(buttons, [&](NSWindow* window) { press(window, buttons[index]); }), index);
    EXPECT_EQ(run({"Only"}, [](NSWindow* window) { press(window, "Only"); }), 0U);
  }
}

TEST_F(AlertTest, returnsItsLastButtonIfItIsEnded) {
  @autoreleasepool {
    const auto end = [](NSWindow*) { [NSApp stopModalWithCode:NSModalResponseAbort]; };
    EXPECT_EQ(run({"First", "Second", "Third"}, end), 2U);
    EXPECT_EQ(run({"Only"}, end), 0U);
  }
}

TEST_F(AlertTest, showsItsTexts) {
  @autoreleasepool {
    run({"OK"}, [](NSWindow* window) {
      std::string texts;
      for (NSView* view in [window.contentView subviews])
        if ([view isKindOfClass:[NSTextField class]])
          texts += textOf([static_cast<NSTextField*>(view) stringValue]) + "\n";
      EXPECT_NE(texts.find("Mëssage"), texts.npos) << texts;
      EXPECT_NE(texts.find("Informätion"), texts.npos) << texts;
      press(window, "OK");
    });
  }
}

TEST_F(AlertTest, letsTimersPostedWorkAndObserversRun) {
  @autoreleasepool {
    MainRunLoop loop;
    std::vector<std::string> ran;
    NSWindow* __unsafe_unretained shown = nil;
    const Observation observation =
        observeNotifications(NSNotificationCenter.defaultCenter, @"Some", [&](NSNotification*) {
          ran.emplace_back("observer");
          loop.after(1ms, [&] {
            ran.emplace_back("timer");
            press(shown, "OK");
            wake();
          });
        });
    run({"OK"}, [&](NSWindow* window) {
      shown = window;
      loop.post([&] {
        ran.emplace_back("work");
        [NSNotificationCenter.defaultCenter postNotificationName:@"Some" object:nil];
      });
    });
    EXPECT_EQ(ran, (std::vector<std::string>{"work", "observer", "timer"}));
  }
}

TEST(UserInterfaceTest, activatesTheProgram) {
  AppKitUserInterface interface;
  interface.becomeAccessory();
  interface.activateIgnoringOthers();
  EXPECT_TRUE(runUntil([] { return [NSApp isActive]; }));
}

// --- The application ---

class DelegateOfTheTest : public ApplicationDelegate {
 public:
  void applicationDidFinishLaunching() override { ++launches; }
  bool applicationShouldTerminate() override { return mayTerminate; }
  bool applicationShouldHandleReopen(bool hasVisibleWindows) override {
    sawWindows = hasVisibleWindows;
    return mayRaise;
  }

  int launches = 0;
  bool mayTerminate = false;
  bool mayRaise = false;
  bool sawWindows = false;
};

TEST(ApplicationTest, forwardsToItsDelegateWhileItLives) {
  @autoreleasepool {
    AppKitApplication application;
    auto delegate = std::make_shared<DelegateOfTheTest>();
    application.setDelegate(delegate);
    EXPECT_EQ(delegate.use_count(), 1) << "weakly held";
    id<NSApplicationDelegate> const forwarder = [NSApp delegate];
    EXPECT_NE([NSApp mainMenu], nil);
    [forwarder applicationDidFinishLaunching:nil];
    EXPECT_EQ(delegate->launches, 1);
    EXPECT_EQ([forwarder applicationShouldTerminate:NSApp], NSTerminateCancel);
    delegate->mayTerminate = true;
    EXPECT_EQ([forwarder applicationShouldTerminate:NSApp], NSTerminateNow);
    EXPECT_FALSE([forwarder applicationShouldHandleReopen:NSApp hasVisibleWindows:YES]);
    EXPECT_TRUE(delegate->sawWindows);
    delegate->mayRaise = true;
    EXPECT_TRUE([forwarder applicationShouldHandleReopen:NSApp hasVisibleWindows:NO]);
    EXPECT_FALSE(delegate->sawWindows);
    delegate->mayTerminate = false;
    application.terminate();
    delegate = nullptr;
    [forwarder applicationDidFinishLaunching:nil];
    EXPECT_EQ([forwarder applicationShouldTerminate:NSApp], NSTerminateNow);
    EXPECT_TRUE([forwarder applicationShouldHandleReopen:NSApp hasVisibleWindows:NO]);
    EXPECT_TRUE(
        [static_cast<id<NSApplicationDelegateOfMacOS12>>(forwarder) applicationSupportsSecureRestorableState:NSApp]);
    [NSApp setDelegate:nil];
  }
}

TEST(CallBackDeathTest, endsTheProgramForAnException) {
  EXPECT_DEATH(callBack([] { [NSException raise:@"Name" format:@"Reason"]; }), "");
  EXPECT_DEATH(callBack([] { throw 5; }), "");
}

TEST(NativeDesktopTest, needsADisplay) {
  const EnvironmentScope display("DISPLAY", std::nullopt);
  EXPECT_THROW(nativeDesktopPlatform(), Error);
}

TEST(NativeDesktopTest, hasAllParts) {
  const Platform& platform = nativeDesktopPlatform();
  EXPECT_EQ(&platform, &nativeDesktopPlatform());
  ASSERT_NE(platform.desktop, nullptr);
  EXPECT_NE(&platform.userInterface, &nativePlatform().userInterface);
  EXPECT_EQ(&platform.fileSystem, &nativePlatform().fileSystem);
  [NSApp setDelegate:nil];
}

// --- The updater ---

class UpdaterDelegateOfTheTest : public UpdaterDelegate {
 public:
  bool supportsGentleScheduledUpdateReminders() const override { return true; }
  bool standardUserDriverShouldHandleShowingScheduledUpdate(bool inImmediateFocus) override { return inImmediateFocus; }
  void standardUserDriverWillHandleShowingUpdate(bool isUserInitiated) override {
    note(isUserInitiated ? "by user" : "scheduled");
  }
  void standardUserDriverDidReceiveUserAttention() override { note("attention"); }
  void standardUserDriverWillFinishUpdateSession() override { note("finished"); }
  bool shouldPostponeRelaunch(Work work) override {
    install = std::move(work);
    return true;
  }
  void note(const std::string& what) { noted.push_back(what); }

  std::vector<std::string> noted;
  Work install;
};

class UpdaterTest : public testing::Test {
 protected:
  static id forwarder() { return SPUStandardUpdaterController.last.userDriverDelegate; }
  static SPUUpdater* updater() { return SPUStandardUpdaterController.last.updater; }

  std::shared_ptr<UpdaterDelegateOfTheTest> delegate_ = std::make_shared<UpdaterDelegateOfTheTest>();
  std::shared_ptr<UpdaterController> controller_ = SparkleUpdater().start(delegate_);
};

TEST_F(UpdaterTest, forwardsToItsDelegateWhileItLives) {
  @autoreleasepool {
    EXPECT_EQ(SPUStandardUpdaterController.last.updaterDelegate, forwarder());
    EXPECT_EQ(delegate_.use_count(), 1) << "weakly held";
    EXPECT_TRUE([forwarder() supportsGentleScheduledUpdateReminders]);
    EXPECT_TRUE([forwarder() standardUserDriverShouldHandleShowingScheduledUpdate:nil andInImmediateFocus:YES]);
    EXPECT_FALSE([forwarder() standardUserDriverShouldHandleShowingScheduledUpdate:nil andInImmediateFocus:NO]);
    SPUUserUpdateState* const state = [[SPUUserUpdateState alloc] init];
    [forwarder() standardUserDriverWillHandleShowingUpdate:YES forUpdate:nil state:state];
    state.userInitiated = YES;
    [forwarder() standardUserDriverWillHandleShowingUpdate:YES forUpdate:nil state:state];
    [forwarder() standardUserDriverDidReceiveUserAttentionForUpdate:nil];
    [forwarder() standardUserDriverWillFinishUpdateSession];
    EXPECT_EQ(delegate_->noted, (std::vector<std::string>{"scheduled", "by user", "attention", "finished"}));
    delegate_ = nullptr;
    EXPECT_FALSE([forwarder() supportsGentleScheduledUpdateReminders]);
    EXPECT_TRUE([forwarder() standardUserDriverShouldHandleShowingScheduledUpdate:nil andInImmediateFocus:NO]);
    [forwarder() standardUserDriverWillHandleShowingUpdate:YES forUpdate:nil state:state];
    [forwarder() standardUserDriverDidReceiveUserAttentionForUpdate:nil];
    [forwarder() standardUserDriverWillFinishUpdateSession];
    EXPECT_FALSE([forwarder() updater:nil
        shouldPostponeRelaunchForUpdate:nil
                     untilInvokingBlock:^{
                     }]);
  }
}

TEST_F(UpdaterTest, keepsTheInstallationUntilItIsWanted) {
  int installed = 0;
  int* const counter = &installed;
  @autoreleasepool {
    EXPECT_TRUE([forwarder() updater:nil
        shouldPostponeRelaunchForUpdate:nil
                     untilInvokingBlock:^{
                       ++*counter;
                     }]);
  }
  turn();
  EXPECT_EQ(installed, 0);
  delegate_->install();
  EXPECT_EQ(installed, 1);
}

TEST_F(UpdaterTest, storesTheSettingAndChecks) {
  controller_->setAutomaticallyChecksForUpdates(true);
  EXPECT_TRUE(controller_->automaticallyChecksForUpdates());
  controller_->setAutomaticallyChecksForUpdates(false);
  EXPECT_FALSE(controller_->automaticallyChecksForUpdates());
  EXPECT_FALSE(controller_->canCheckForUpdates());
  updater().canCheckForUpdates = YES;
  EXPECT_TRUE(controller_->canCheckForUpdates());
  controller_->checkForUpdates();
  EXPECT_EQ(SPUStandardUpdaterController.last.checks, 1);
}

TEST_F(UpdaterTest, observesChangesUntilReleased) {
  @autoreleasepool {
    int called = 0;
    Observation observation = controller_->observeCanCheckForUpdates([&] { ++called; });
    EXPECT_EQ(called, 1) << "at once";
    updater().canCheckForUpdates = YES;
    EXPECT_EQ(called, 2);
    observation = nullptr;
    updater().canCheckForUpdates = NO;
    EXPECT_EQ(called, 2);
  }
  EXPECT_EQ(instancesOf(@"CanCheckObserver"), 0);
}

TEST_F(UpdaterTest, observationMayEndInItsHandler) {
  const auto held = std::make_shared<int>(5);
  @autoreleasepool {
    Observation observation;
    int called = 0;
    observation = controller_->observeCanCheckForUpdates([&, held] {
      if (++called == 2) observation = nullptr;
      EXPECT_EQ(*held, 5);
    });
    updater().canCheckForUpdates = YES;
    updater().canCheckForUpdates = NO;
    EXPECT_EQ(called, 2);
  }
  EXPECT_EQ(held.use_count(), 1);
}

TEST_F(UpdaterTest, endsWithItsController) {
  EXPECT_EQ(instancesOf(@"SparkleForwarder"), 1);
  @autoreleasepool {
    controller_ = nullptr;
  }
  EXPECT_EQ(instancesOf(@"SparkleForwarder"), 0);
  EXPECT_EQ(SPUStandardUpdaterController.last, nil);
}

}  // namespace
