// The launch: what it creates, and in which order.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <memory>
#include <string>

#include "tests/support/controller_test.h"

namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::IsEmpty;

class Launch : public ControllerTest {};

TEST_F(Launch, setsEverythingUpInOrder) {
  controller_ = std::make_shared<SorterDelegate>();
  controller_->applicationDidFinishLaunching();
  EXPECT_EQ(noted(), (Entries{"status item",
                              "image bookmark",
                              "tool tip Quillery",
                              "item About Quillery…",
                              "separator",
                              "item",
                              "item Sort Now…",
                              "item Schedule…",
                              "separator",
                              "start updater",
                              "item Check for Updates…",
                              "item Check for Updates Automatically",
                              "check Check for Updates Automatically",
                              "enable Check for Updates…",
                              "item Website",
                              "separator",
                              "item Quit",
                              "menu",
                              "observe terminations",
                              "observe wake"} +
                      refreshed(runningTitle) + Entries{"post"}));
}

TEST_F(Launch, makesASquareStatusItemWithTheBookmarkSymbol) {
  launch();
  const SymbolImage& image = machine_.screen.statusItem()->image();
  EXPECT_EQ(image.name, "bookmark");
  EXPECT_EQ(image.accessibilityDescription, "Quillery");
  EXPECT_TRUE(image.isTemplate);
  EXPECT_EQ(machine_.screen.statusItem()->toolTip(), "Quillery");
  EXPECT_EQ(controller_->item, machine_.screen.statusItem());
}

TEST_F(Launch, makesTheMenuFromTopToBottom) {
  launch();
  EXPECT_THAT(machine_.screen.menu().titles(),
              ElementsAre("About Quillery…", "-", runningTitle, "Sort Now…", "Schedule…", "-", "Check for Updates…",
                          "Check for Updates Automatically", "Website", "-", "Quit"));
  EXPECT_EQ(controller_->status->title(), runningTitle);
  EXPECT_EQ(controller_->updateMenuItem->title(), "Check for Updates…");
  EXPECT_EQ(controller_->automaticUpdateMenuItem->title(), "Check for Updates Automatically");
}

TEST_F(Launch, keepsItsTwoObservations) {
  launch();
  EXPECT_EQ(controller_->observers.size(), 2U);
  EXPECT_NE(controller_->updateObservation, nullptr);
}

TEST_F(Launch, showsStoppedIfSortingWasStopped) {
  launchStopped();
  EXPECT_EQ(status_->title(), stoppedTitle);
}

TEST_F(Launch, showsRunningUntilAccessIsChecked) {
  removeBookmarks();
  launch();
  EXPECT_EQ(status_->title(), runningTitle);
  EXPECT_FALSE(controller_->needsAccess);
}

TEST_F(Launch, postsTheSetupSoThatTheMenuIsReadyFirst) {
  controller_ = std::make_shared<SorterDelegate>();
  removeBookmarks();
  controller_->applicationDidFinishLaunching();
  EXPECT_EQ(machine_.screen.windows().size(), 0U);
  EXPECT_EQ(machine_.screen.menu().items().size(), 11U);
  machine_.loop.run();
  EXPECT_EQ(machine_.screen.visibleWindows(), 1) << "the access window";
}

TEST_F(Launch, keepsTheControllerAliveUntilTheSetup) {
  controller_ = std::make_shared<SorterDelegate>();
  controller_->applicationDidFinishLaunching();
  const std::weak_ptr<SorterDelegate> controller = controller_;
  controller_.reset();
  EXPECT_FALSE(controller.expired());
  machine_.loop.run();
  EXPECT_TRUE(controller.expired());
}

TEST_F(Launch, menuItemsRunTheirCommands) {
  launch();
  VirtualMenu& menu = machine_.screen.menu();
  menu.item("About Quillery…").choose();
  EXPECT_TRUE(machine_.screen.window("About Quillery").isVisible());
  menu.item("Schedule…").choose();
  EXPECT_TRUE(machine_.screen.window("Schedule").isVisible());
  menu.item(runningTitle).choose();
  EXPECT_FALSE(controller_->enabled);
  machine_.userInterface.willAnswer(0);
  menu.item("Sort Now…").choose();
  EXPECT_TRUE(isSorted());
  noted();
  menu.item("Check for Updates…").choose();
  menu.item("Check for Updates Automatically").choose();
  menu.item("Website").choose();
  menu.item("Quit").choose();
  EXPECT_THAT(noted(),
              ElementsAre("check for updates", "check automatically off", "uncheck Check for Updates Automatically",
                          "address https://quillery.example.com/", "terminate"));
}

TEST_F(Launch, menuDoesNothingAfterTheControllerIsGone) {
  launch();
  const auto menu = menu_;
  controller_.reset();
  for (const auto& item : menu->items())
    if (item) item->choose();
  EXPECT_THAT(noted(), IsEmpty());
}

TEST_F(Launch, observesThatSafariQuits) {
  launch();
  startSafari();
  machine_.applications.end(safari);
  machine_.loop.advance(1s);
  EXPECT_EQ(sorts(), 1);
}

TEST_F(Launch, observesAWakeInEveryState) {
  launch();
  storeDaily(9, 30);
  machine_.sleep(10min);
  machine_.loop.run();
  EXPECT_EQ(nextSort(), "2026-09-21 09:30:00");
  controller_->stop();
  machine_.sleep(10min);
  machine_.loop.run();
  EXPECT_EQ(nextSort(), "none");
}

}  // namespace
