// The setup after every launch: the install location, access, the login agent and the schedule.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <string>

#include "tests/support/controller_test.h"

namespace {

using namespace std::chrono_literals;
using testing::Contains;
using testing::ElementsAre;
using testing::Not;
using testing::StartsWith;

class FirstRunSetup : public ControllerTest {
 protected:
  FirstRunSetup() {
    storeDaily(9, 30);
    launch();
  }

  VirtualWindow& access() const { return machine_.screen.window("Quillery"); }
  bool isRegistered() const {
    return machine_.files.files().contains("/home/user/Library/LaunchAgents/com.fenwarde.quillery.plist");
  }
};

TEST_F(FirstRunSetup, checksLocationAndAccessThenRegistersThenArms) {
  controller_->setUp();
  Entries all = noted();
  ASSERT_GE(all.size(), 4U);
  EXPECT_EQ(all.at(0), "bundle path");
  EXPECT_EQ(all.at(1), "read " + bookmarks);
  EXPECT_EQ(all.at(2), "set bookmarkAccessPreviouslyGranted true");
  EXPECT_THAT(all.at(3), StartsWith("create folder "));
  EXPECT_EQ(all.at(all.size() - 2).substr(0, 29), "run /bin/launchctl bootstrap ");
  EXPECT_EQ(all.back(), "timer at 2026-09-21 09:30:00");
  EXPECT_TRUE(isRegistered());
}

TEST_F(FirstRunSetup, registersNoLoginAgentIfItIsNotInstalled) {
  machine_.bundle.runWhereItWasBuilt();
  testing::internal::CaptureStderr();
  controller_->setUp();
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "quillery: it is not installed, so it will not start at login\n");
  EXPECT_FALSE(isRegistered());
  EXPECT_EQ(machine_.journal.count("run"), 0);
  EXPECT_EQ(noted().back(), "timer at 2026-09-21 09:30:00") << "it sorts nevertheless";
}

TEST_F(FirstRunSetup, registersBeforeWorkPostedAfterLaunch) {
  controller_ = std::make_shared<SorterDelegate>();
  controller_->applicationDidFinishLaunching();
  machine_.loop.post([&] { EXPECT_TRUE(isRegistered()); });
  EXPECT_FALSE(isRegistered());
  machine_.loop.run();
  EXPECT_TRUE(isRegistered());
}

TEST_F(FirstRunSetup, leavesTheStatusLineAloneWithAccess) {
  controller_->needsAccess = true;
  controller_->setUp();
  EXPECT_TRUE(controller_->needsAccess);
  EXPECT_THAT(noted(), Not(Contains(StartsWith("title"))));
}

TEST_F(FirstRunSetup, registersButArmsNothingWhileStopped) {
  controller_->stop();
  controller_->setUp();
  EXPECT_TRUE(isRegistered());
  EXPECT_EQ(nextSort(), "none");
}

TEST_F(FirstRunSetup, terminatesOnADiskImageWithAnAlert) {
  machine_.bundle.moveTo("/Volumes/Quillery/Quillery.app");
  machine_.userInterface.willAnswer(0, [&] { EXPECT_FALSE(machine_.application.hasTerminated()); });
  controller_->setUp();
  EXPECT_THAT(noted(), ElementsAre("bundle path", "accessory", "activate", "alert Install the app first", "terminate"));
  EXPECT_EQ(machine_.userInterface.alerts().at(0).informativeText,
            "Drag the app into Applications, then open the installed copy.");
  EXPECT_FALSE(isRegistered());
}

TEST_F(FirstRunSetup, terminatesInATranslocatedCopyWithTheSameAlert) {
  for (const std::string folders : {"/private/var/folders", "/var/folders"}) {
    machine_.bundle.moveTo(folders + "/x1/y2/X/AppTranslocation/0A1B2C3D-0B7F-4E63-9A48-000000000001/d/Quillery.app");
    machine_.userInterface.willAnswer(0);
    controller_->setUp();
    EXPECT_THAT(noted(),
                ElementsAre("bundle path", "accessory", "activate", "alert Install the app first", "terminate"));
  }
  EXPECT_FALSE(isRegistered());
}

TEST_F(FirstRunSetup, takesNoOtherPathForADiskImageOrATranslocation) {
  for (const char* place :
       {"/VolumesX/Quillery.app", "/Volumes", "/Applications/Volumes/Quillery.app", "/volumes/Quillery/Quillery.app",
        "/Applications/AppTranslocation/Quillery.app", "/private/var/folders/x1/AppTranslocation.app"}) {
    machine_.bundle.moveTo(place);
    controller_->setUp();
    EXPECT_FALSE(machine_.application.hasTerminated()) << place;
  }
  EXPECT_TRUE(isRegistered());
}

TEST_F(FirstRunSetup, onlyWaitsWithoutAccess) {
  removeBookmarks();
  controller_->setUp();
  machine_.loop.advance(10s);
  EXPECT_TRUE(access().isVisible());
  EXPECT_FALSE(isRegistered());
  EXPECT_EQ(nextSort(), "none");
  EXPECT_TRUE(controller_->enabled);
  EXPECT_FALSE(controller_->needsAccess);
}

TEST_F(FirstRunSetup, registersAndArmsOnceAccessArrives) {
  removeBookmarks();
  controller_->setUp();
  putUnsortedBookmarks();
  machine_.loop.advance(1s);
  EXPECT_FALSE(access().isVisible());
  EXPECT_TRUE(isRegistered());
  EXPECT_EQ(nextSort(), "2026-09-21 09:30:00");
}

TEST_F(FirstRunSetup, registersAndArmsOnceARetryFindsAccess) {
  removeBookmarks();
  controller_->setUp();
  putUnsortedBookmarks();
  access().press("Retry");
  EXPECT_TRUE(isRegistered());
  EXPECT_EQ(nextSort(), "2026-09-21 09:30:00");
}

TEST_F(FirstRunSetup, cancelMeansAccessRequiredAndNoRegistration) {
  controller_->scheduleDaily();
  const auto timer = controller_->dailyTimer;
  removeBookmarks();
  controller_->setUp();
  noted();
  access().press("Cancel");
  EXPECT_EQ(noted(), (Entries{"invalidate every 1000 ms", "hide Quillery", "invalidate at 2026-09-21 09:30:00"} +
                      refreshed(accessTitle)));
  EXPECT_FALSE(controller_->enabled);
  EXPECT_TRUE(controller_->needsAccess);
  EXPECT_EQ(controller_->dailyTimer, timer) << "invalidated but kept";
  EXPECT_FALSE(isRegistered());
  EXPECT_FALSE(machine_.defaults.values().contains("sortingPaused"));
}

TEST_F(FirstRunSetup, reportsAFailedRegistrationOnceAndArmsTheTimer) {
  machine_.processes.willAnswer("bootstrap", 1);
  machine_.userInterface.willAnswer(0);
  controller_->setUp();
  ASSERT_EQ(machine_.userInterface.alerts().size(), 1U);
  EXPECT_EQ(machine_.userInterface.alerts().at(0).messageText, "Login setup failed");
  EXPECT_EQ(machine_.userInterface.alerts().at(0).informativeText,
            "Could not enable automatic sorting. Please reopen the installed app.");
  EXPECT_EQ(nextSort(), "2026-09-21 09:30:00");
}

TEST_F(FirstRunSetup, reportsTheSystemsErrorIfRegistrationFails) {
  machine_.files.failOn("write atomically", ENOSPC);
  machine_.userInterface.willAnswer(0);
  controller_->setUp();
  EXPECT_THAT(machine_.userInterface.alerts().at(0).informativeText, testing::HasSubstr("No space left on device"));
}

TEST_F(FirstRunSetup, changesNothingOnASecondLaunch) {
  controller_->setUp();
  const auto files = machine_.files.files();
  launch();
  controller_->setUp();
  EXPECT_EQ(machine_.files.files(), files);
  EXPECT_THAT(noted(), Contains(StartsWith("run /bin/launchctl print ")));
}

TEST_F(FirstRunSetup, keepsTheControllerAliveWhileItWaits) {
  removeBookmarks();
  controller_->setUp();
  const std::weak_ptr<SorterDelegate> controller = controller_;
  controller_.reset();
  EXPECT_FALSE(controller.expired());
  access().press("Cancel");
  EXPECT_TRUE(controller.expired());
}

}  // namespace
