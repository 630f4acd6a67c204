// Access to the bookmarks: the read probe, the window that waits for access, and the completion.
#include "app/bookmark_permission_controller.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <chrono>
#include <string>
#include <vector>

#include "tests/support/controller_test.h"

namespace {

using namespace std::chrono_literals;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;

const std::string granted = "set bookmarkAccessPreviouslyGranted true";
const std::string probed = "read " + bookmarks;

class BookmarkPermission : public ControllerTest {
 protected:
  // Calls check() and records what its completion receives, under `name`.
  void check(const std::string& name = "asked") {
    access_->check([this, name](bool isGranted) { told_.push_back(name + (isGranted ? ": granted" : ": refused")); });
  }
  // Opens the access window.
  void wait() {
    removeBookmarks();
    check();
    noted();
  }
  VirtualWindow& window() const { return machine_.screen.window("Quillery"); }

  void expectIdle() const {
    EXPECT_EQ(access_->dialog, nullptr);
    EXPECT_EQ(access_->timer, nullptr);
    EXPECT_FALSE(access_->completion);
    EXPECT_EQ(machine_.loop.armedTimers(), 0);
    EXPECT_EQ(machine_.screen.visibleWindows(), 0);
  }
  void expectWaiting() const {
    EXPECT_NE(access_->dialog, nullptr);
    ASSERT_NE(access_->timer, nullptr);
    EXPECT_TRUE(access_->timer->isValid());
    EXPECT_TRUE(access_->completion);
    EXPECT_TRUE(window().isVisible());
  }
  bool isStored() const { return machine_.defaults.values().contains("bookmarkAccessPreviouslyGranted"); }

  std::shared_ptr<BookmarkPermissionController> access_ = std::make_shared<BookmarkPermissionController>();
  std::vector<std::string> told_;
};

TEST_F(BookmarkPermission, isASingleton) {
  const auto shared = BookmarkPermissionController::shared();
  EXPECT_NE(shared, nullptr);
  EXPECT_EQ(BookmarkPermissionController::shared(), shared);
}

TEST_F(BookmarkPermission, isIdleAtFirst) { expectIdle(); }

TEST_F(BookmarkPermission, canReadOnlyReadsTheFile) {
  EXPECT_TRUE(access_->canRead());
  machine_.files.failOn("read", EPERM, 2);
  EXPECT_FALSE(access_->canRead());
  removeBookmarks();
  EXPECT_FALSE(access_->canRead());
  EXPECT_EQ(noted(), (Entries{probed, probed, probed}));
}

// --- Idle ---

TEST_F(BookmarkPermission, checkReportsAccessBeforeItReturns) {
  check();
  EXPECT_THAT(told_, ElementsAre("asked: granted"));
  EXPECT_EQ(noted(), (Entries{probed, granted})) << "no window is created";
  expectIdle();
}

TEST_F(BookmarkPermission, checkWithoutAccessOpensTheWindowThenPolls) {
  removeBookmarks();
  check();
  EXPECT_EQ(noted(), (Entries{probed, "window Quillery", "center Quillery", "show Quillery", "activate",
                              "timer every 1000 ms"}));
  EXPECT_THAT(told_, IsEmpty());
  expectWaiting();
}

TEST_F(BookmarkPermission, windowHasAFixedSizeAndNoCloseBox) {
  wait();
  EXPECT_EQ(window().description().width, 480);
  EXPECT_EQ(window().description().height, 330);
  EXPECT_FALSE(window().description().isClosable);
}

TEST_F(BookmarkPermission, windowHasItsControlsInTheirFrames) {
  wait();
  const std::vector<WantedControl> wanted = {
      {"image", "/Applications/Quillery.app/Contents/Resources/AppIcon.icns", {208, 238, 64, 64}, KeyEquivalent::none},
      {"label", "Allow access to Safari bookmarks", {24, 197, 432, 29}, KeyEquivalent::none},
      {"label",
       "Enable Quillery in System Settings → Privacy & Security → Full Disk Access.\n\nThis window closes when access "
       "is available. If macOS requests Quit & Reopen, allow it.",
       {32, 78, 416, 109},
       KeyEquivalent::none},
      {"push button", "Cancel", {24, 24, 140, 34}, KeyEquivalent::escape},
      {"push button", "Retry", {170, 24, 140, 34}, KeyEquivalent::none},
      {"push button", "Open Settings", {316, 24, 140, 34}, KeyEquivalent::returnKey},
  };
  expectControls(window(), wanted);
}

TEST_F(BookmarkPermission, windowCentresABoldHeadingAndAWrappedText) {
  wait();
  const Label& heading = window().control("Allow access to Safari bookmarks").label;
  EXPECT_EQ(heading.fontSize, 19);
  EXPECT_TRUE(heading.isBold);
  EXPECT_TRUE(heading.isCentered);
  EXPECT_FALSE(heading.wraps);
  const Label& body = window().controls()[2]->label;
  EXPECT_EQ(body.fontSize, 14);
  EXPECT_FALSE(body.isBold);
  EXPECT_TRUE(body.isCentered);
  EXPECT_TRUE(body.wraps);
}

// --- Waiting ---

TEST_F(BookmarkPermission, pollClosesTheWindowAndReportsAccessOnce) {
  wait();
  machine_.loop.advance(1s);
  EXPECT_EQ(noted(), Entries{probed});
  expectWaiting();
  putUnsortedBookmarks();
  machine_.loop.advance(1s);
  EXPECT_EQ(noted(), (Entries{probed, granted, "invalidate every 1000 ms", "hide Quillery"}));
  EXPECT_THAT(told_, ElementsAre("asked: granted"));
  expectIdle();
  machine_.loop.advance(1min);
  EXPECT_THAT(told_, ElementsAre("asked: granted"));
}

TEST_F(BookmarkPermission, pollsOnceASecondUntilAccessArrives) {
  EXPECT_EQ(accessPollInterval, 1s);
  wait();
  machine_.loop.advance(1h);
  EXPECT_EQ(noted().size(), 3600U);
  expectWaiting();
}

TEST_F(BookmarkPermission, retryWithoutAccessChangesNothing) {
  wait();
  window().press("Retry");
  EXPECT_EQ(noted(), Entries{probed});
  EXPECT_THAT(told_, IsEmpty());
  expectWaiting();
}

TEST_F(BookmarkPermission, retryWithAccessStoresAndReportsIt) {
  wait();
  putUnsortedBookmarks();
  window().press("Retry");
  EXPECT_THAT(told_, ElementsAre("asked: granted"));
  EXPECT_TRUE(isStored());
  expectIdle();
}

TEST_F(BookmarkPermission, cancelReportsRefusalOnceAndStoresNothing) {
  wait();
  window().press("Cancel");
  EXPECT_EQ(noted(), (Entries{"invalidate every 1000 ms", "hide Quillery"}));
  EXPECT_THAT(told_, ElementsAre("asked: refused"));
  EXPECT_FALSE(isStored());
  expectIdle();
}

TEST_F(BookmarkPermission, cancelKeepsAnEarlierGrantStored) {
  machine_.defaults.put("bookmarkAccessPreviouslyGranted", true);
  wait();
  window().pressKey(KeyEquivalent::escape);
  EXPECT_THAT(told_, ElementsAre("asked: refused"));
  EXPECT_EQ(machine_.defaults.values().at("bookmarkAccessPreviouslyGranted"), PlistValue(true));
}

TEST_F(BookmarkPermission, settingsRevealsTheProgramAndKeepsWaiting) {
  wait();
  window().press("Open Settings");
  EXPECT_EQ(noted(), (Entries{"bundle path", "reveal /Applications/Quillery.app",
                              "address x-apple.systempreferences:com.apple.preference.security?Privacy_AllFiles"}));
  EXPECT_THAT(told_, IsEmpty());
  expectWaiting();
  window().pressKey(KeyEquivalent::returnKey);
  EXPECT_EQ(machine_.journal.count("reveal"), 2) << "Return presses the same button";
}

TEST_F(BookmarkPermission, settingsOpenTheFilesFolderOnOtherSystems) {
  machine_.workspace.removeFileAccessSettings();
  wait();
  window().press("Open Settings");
  EXPECT_EQ(noted(), Entries{"folder " + bookmarks.substr(0, bookmarks.rfind('/'))});
  expectWaiting();
}

TEST_F(BookmarkPermission, theWindowNamesTheFileOnceOnStandardError) {
  machine_.workspace.removeFileAccessSettings();
  testing::internal::CaptureStderr();
  wait();
  check("again");
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            "quillery: the bookmark file couldn’t be read: " + bookmarks + "\n");
}

TEST_F(BookmarkPermission, nothingIsReportedIfThereAreSettings) {
  testing::internal::CaptureStderr();
  wait();
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

TEST_F(BookmarkPermission, secondCheckWithoutAccessDropsItsCompletion) {
  wait();
  check("again");
  EXPECT_EQ(noted(), (Entries{probed, "show Quillery"}));
  EXPECT_EQ(machine_.screen.windows().size(), 1U);
  putUnsortedBookmarks();
  machine_.loop.advance(1s);
  EXPECT_THAT(told_, ElementsAre("asked: granted"));
}

TEST_F(BookmarkPermission, secondCheckWithAccessCallsBothCompletionsInOrder) {
  wait();
  putUnsortedBookmarks();
  check("again");
  EXPECT_EQ(noted(), (Entries{probed, granted, granted, "invalidate every 1000 ms", "hide Quillery"}));
  EXPECT_THAT(told_, ElementsAre("asked: granted", "again: granted"));
  expectIdle();
}

TEST_F(BookmarkPermission, checkFromACompletionOpensTheWindowAgain) {
  removeBookmarks();
  access_->check([&](bool) { check("in the answer"); });
  window().press("Cancel");
  expectWaiting();
  window().press("Cancel");
  EXPECT_THAT(told_, ElementsAre("in the answer: refused"));
}

// --- finish ---

TEST_F(BookmarkPermission, finishFalseWhileIdleHasNoEffect) {
  access_->finish(false);
  EXPECT_THAT(noted(), IsEmpty());
}

TEST_F(BookmarkPermission, finishTrueWhileIdleOnlyStoresAccess) {
  access_->finish(true);
  EXPECT_EQ(noted(), Entries{granted});
}

TEST_F(BookmarkPermission, timerDoesNotProbeAfterTheControllerIsGone) {
  wait();
  VirtualWindow& orphan = window();
  access_.reset();
  machine_.loop.advance(10s);
  orphan.press("Retry");
  EXPECT_THAT(noted(), Not(Contains(probed)));
}

}  // namespace
