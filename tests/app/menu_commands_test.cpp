// The About window, the menu's small commands, termination, and reopening.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <chrono>
#include <string>

#include "engine/backups.h"
#include "tests/support/controller_test.h"

namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::IsEmpty;

class MenuCommands : public ControllerTest {
 protected:
  MenuCommands() { launch(); }

  VirtualWindow& about() { return machine_.screen.window("About Quillery"); }
  VirtualWindow& access() { return machine_.screen.window("Quillery"); }
};

// --- The About window ---

TEST_F(MenuCommands, aboutWindowHasItsSizeAndCanBeClosed) {
  controller_->showAbout();
  const WindowDescription& window = about().description();
  EXPECT_EQ(window.width, 510);
  EXPECT_EQ(window.height, 320);
  EXPECT_EQ(window.title, "About Quillery");
  EXPECT_TRUE(window.isClosable);
}

TEST_F(MenuCommands, aboutIsCentredThenShownInFront) {
  controller_->showAbout();
  EXPECT_THAT(noted(),
              ElementsAre("window About Quillery", "center About Quillery", "show About Quillery", "activate"));
}

TEST_F(MenuCommands, aboutHasItsIconTextAndButtonsInTheirFrames) {
  controller_->showAbout();
  EXPECT_EQ(about().only("image").frame, (Frame{219, 222, 72, 72}));
  EXPECT_EQ(about().only("image").text, "/Applications/Quillery.app/Contents/Resources/AppIcon.icns");
  EXPECT_EQ(about().only("label").frame, (Frame{24, 66, 462, 146}));
  EXPECT_TRUE(about().only("label").label.isCentered);
  EXPECT_TRUE(about().only("label").label.wraps);
  EXPECT_EQ(about().control("Website").frame, (Frame{24, 20, 150, 32}));
  EXPECT_EQ(about().control("Support").frame, (Frame{180, 20, 150, 32}));
  EXPECT_EQ(about().control("Open Backups").frame, (Frame{336, 20, 150, 32}));
  EXPECT_EQ(about().controls().size(), 5U);
  for (const char* title : {"Website", "Support", "Open Backups"})
    EXPECT_EQ(about().control(title).key, KeyEquivalent::none);
}

TEST_F(MenuCommands, aboutShowsTheVersion) {
  controller_->showAbout();
  EXPECT_EQ(
      about().only("label").text,
      "Quillery\nVersion 1.2.3 (build 45)\n\nAutomatically organise Safari bookmarks alphabetically, with folders "
      "first.\n\nCopyright © 2026 Fenwarde");
}

TEST_F(MenuCommands, aboutLeavesAMissingVersionEmpty) {
  machine_.bundle.forgetInformation();
  controller_->showAbout();
  EXPECT_THAT(about().only("label").text, testing::StartsWith("Quillery\nVersion  (build )\n\n"));
}

TEST_F(MenuCommands, aboutChosenTwiceShowsOneWindow) {
  controller_->showAbout();
  noted();
  controller_->showAbout();
  EXPECT_THAT(noted(), ElementsAre("show About Quillery", "activate"));
  EXPECT_EQ(machine_.screen.windows().size(), 1U);
}

TEST_F(MenuCommands, aboutReopensTheSameWindow) {
  controller_->showAbout();
  about().close();
  EXPECT_FALSE(about().isVisible());
  controller_->showAbout();
  EXPECT_TRUE(about().isVisible());
  EXPECT_EQ(machine_.screen.windows().size(), 1U);
}

TEST_F(MenuCommands, aboutButtonsRunTheirCommands) {
  controller_->showAbout();
  noted();
  for (const char* title : {"Website", "Support", "Open Backups"}) about().press(title);
  EXPECT_THAT(noted(), ElementsAre("address https://quillery.example.com/",
                                   "address mailto:support@quillery.example.com?subject=Quillery",
                                   "create folder " + backupsFolder() + " 0700", "folder " + backupsFolder()));
}

// --- Commands ---

TEST_F(MenuCommands, websiteOpensTheProductsPage) {
  controller_->openWebsite();
  EXPECT_THAT(noted(), ElementsAre("address https://quillery.example.com/"));
}

TEST_F(MenuCommands, supportOpensAMailtoLink) {
  controller_->support();
  EXPECT_THAT(noted(), ElementsAre("address mailto:support@quillery.example.com?subject=Quillery"));
}

TEST_F(MenuCommands, openBackupsCreatesAMissingFolderAndOpensIt) {
  EXPECT_EQ(backupsFolder(), "/home/user/Library/Application Support/Quillery/Backups");
  controller_->openBackups();
  EXPECT_THAT(noted(), ElementsAre("create folder " + backupsFolder() + " 0700", "folder " + backupsFolder()));
  EXPECT_TRUE(machine_.files.folders().contains(backupsFolder()));
}

TEST_F(MenuCommands, openBackupsLeavesAnExistingFolderUnchanged) {
  controller_->tick();
  controller_->openBackups();
  EXPECT_EQ(noted().back(), "folder " + backupsFolder());
  EXPECT_EQ(machine_.files.mode(backupsFolder()), 0700U);
}

TEST_F(MenuCommands, openBackupsReportsThatTheFolderCannotBeCreated) {
  machine_.files.failOn("create folder", EACCES);
  machine_.userInterface.willAnswer(0);
  controller_->openBackups();
  EXPECT_EQ(machine_.userInterface.alerts().at(0).messageText, "Cannot open backups");
  EXPECT_THAT(machine_.userInterface.alerts().at(0).informativeText, testing::HasSubstr("Permission denied"));
  EXPECT_EQ(machine_.journal.count("folder"), 0);
}

// --- Termination ---

TEST_F(MenuCommands, quitInvalidatesTheTimersThenTerminates) {
  storeDaily(9, 30);
  controller_->scheduleDaily();
  startSafari({.quitsAfter = 10s});
  controller_->closeSortReopen(true);
  noted();
  controller_->quit();
  EXPECT_THAT(noted(), ElementsAre("invalidate at 2026-09-21 09:30:00", "invalidate every 250 ms", "terminate"));
  EXPECT_TRUE(machine_.application.hasTerminated());
}

TEST_F(MenuCommands, quitWithoutTimersTerminates) {
  controller_->quit();
  EXPECT_THAT(noted(), ElementsAre("terminate"));
}

TEST_F(MenuCommands, quitDuringASequenceSortsAndReopensNothing) {
  startSafari({.quitsAfter = 10s});
  controller_->closeSortReopen(true);
  controller_->quit();
  machine_.loop.advance(5min);
  EXPECT_EQ(safaris(), 0);
  EXPECT_EQ(sorts(), 0);
  EXPECT_FALSE(isSorted());
}

TEST_F(MenuCommands, mayTerminateWhileBusyAndStoresNothing) {
  controller_->busy = true;
  EXPECT_TRUE(controller_->applicationShouldTerminate());
  EXPECT_THAT(noted(), IsEmpty());
}

// --- Reopening ---

TEST_F(MenuCommands, reopeningReturnsTrueThenChecksAccess) {
  for (const bool hasVisibleWindows : {true, false}) {
    EXPECT_TRUE(machine_.application.reopen(hasVisibleWindows));
    EXPECT_THAT(noted(), ElementsAre("post"));
    machine_.loop.run();
    EXPECT_THAT(noted(), ElementsAre("read " + bookmarks, "set bookmarkAccessPreviouslyGranted true"));
  }
}

TEST_F(MenuCommands, reopeningWithAccessDoesNothingMore) {
  storeDaily(9, 30);
  for (const bool isStopped : {false, true}) {
    if (isStopped) controller_->stop();
    noted();
    machine_.application.reopen(false);
    machine_.loop.run();
    EXPECT_EQ(noted(), (Entries{"post", "read " + bookmarks, "set bookmarkAccessPreviouslyGranted true"}))
        << "no refresh, no timer, no login agent";
    EXPECT_EQ(status_->title(), isStopped ? stoppedTitle : runningTitle);
  }
}

TEST_F(MenuCommands, reopeningWithoutAccessShowsTheAccessWindow) {
  removeBookmarks();
  machine_.application.reopen(false);
  machine_.loop.run();
  EXPECT_TRUE(access().isVisible());
  EXPECT_TRUE(controller_->enabled) << "until the user answers";
}

TEST_F(MenuCommands, reopeningAndCancellingMeansAccessRequired) {
  storeDaily(9, 30);
  controller_->scheduleDaily();
  removeBookmarks();
  machine_.application.reopen(false);
  machine_.loop.run();
  noted();
  access().press("Cancel");
  EXPECT_EQ(noted(), (Entries{"invalidate every 1000 ms", "hide Quillery", "invalidate at 2026-09-21 09:30:00"} +
                      refreshed(accessTitle)));
  EXPECT_FALSE(controller_->enabled);
  EXPECT_TRUE(controller_->needsAccess);
}

TEST_F(MenuCommands, accessThatArrivesAfterReopeningChangesNothing) {
  removeBookmarks();
  machine_.application.reopen(false);
  machine_.loop.run();
  putUnsortedBookmarks();
  machine_.loop.advance(1s);
  EXPECT_FALSE(access().isVisible());
  EXPECT_EQ(status_->title(), runningTitle);
}

TEST_F(MenuCommands, cancellingAfterTheControllerIsGoneDoesNothing) {
  removeBookmarks();
  machine_.application.reopen(false);
  machine_.loop.run();
  controller_.reset();
  access().press("Cancel");
  EXPECT_FALSE(access().isVisible());
}

}  // namespace
