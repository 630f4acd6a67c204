// The states Running, Stopped and Access required: every transition and its effects.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <memory>
#include <new>
#include <string>

#include "app/alert.h"
#include "tests/support/bookmark_trees.h"
#include "tests/support/controller_test.h"

namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::IsEmpty;

class RunState : public ControllerTest {
 protected:
  void expectRunning() const { expectState(true, false, runningTitle); }
  void expectStopped() const { expectState(false, false, stoppedTitle); }
  void expectAccessRequired() const { expectState(false, true, accessTitle); }

 private:
  void expectState(bool enabled, bool needsAccess, const char* title) const {
    EXPECT_EQ(controller_->enabled, enabled);
    EXPECT_EQ(controller_->needsAccess, needsAccess);
    EXPECT_EQ(status_->title(), title);
    EXPECT_FALSE(controller_->busy);
  }
};

// --- The start ---

TEST_F(RunState, beginsWithEveryPropertyAtItsInitialValue) {
  const auto controller = std::make_shared<SorterDelegate>();
  EXPECT_EQ(controller->updaterController, nullptr);
  EXPECT_EQ(controller->updateMenuItem, nullptr);
  EXPECT_EQ(controller->automaticUpdateMenuItem, nullptr);
  EXPECT_EQ(controller->updateObservation, nullptr);
  EXPECT_FALSE(controller->updateInstallPending);
  EXPECT_EQ(controller->updateWaitTimer, nullptr);
  EXPECT_EQ(controller->item, nullptr);
  EXPECT_EQ(controller->dailyTimer, nullptr);
  EXPECT_EQ(controller->quitTimer, nullptr);
  EXPECT_EQ(controller->settingsWindow, nullptr);
  EXPECT_EQ(controller->dailyToggle, nullptr);
  EXPECT_EQ(controller->timePicker, nullptr);
  EXPECT_EQ(controller->quitToggle, nullptr);
  EXPECT_EQ(controller->dayPreset, nullptr);
  EXPECT_THAT(controller->dayButtons, IsEmpty());
  EXPECT_THAT(controller->observers, IsEmpty());
  EXPECT_THAT(controller->ownQuitPIDs, IsEmpty());
  EXPECT_EQ(controller->aboutWindow, nullptr);
  EXPECT_TRUE(controller->enabled);
  EXPECT_FALSE(controller->busy);
  EXPECT_FALSE(controller->needsAccess);
  EXPECT_EQ(controller->status, nullptr);
}

TEST_F(RunState, isRunningOnAFirstStart) {
  launch();
  expectRunning();
}

TEST_F(RunState, isRunningIfSortingIsStoredAsNotPaused) {
  machine_.defaults.put("sortingPaused", false);
  launch();
  expectRunning();
}

TEST_F(RunState, isStoppedIfSortingIsStoredAsPaused) {
  launchStopped();
  expectStopped();
}

TEST_F(RunState, convertsASortingPausedOfAnotherType) {
  machine_.defaults.put("sortingPaused", u"YES");
  launch();
  expectStopped();
  machine_.defaults.put("sortingPaused", PlistValue::array({true}));
  launch();
  expectRunning();
}

TEST_F(RunState, hasNoEffectsWhenCreated) {
  const auto controller = std::make_shared<SorterDelegate>();
  EXPECT_THAT(noted(), IsEmpty());
}

// --- The status line ---

TEST_F(RunState, isShownAsRunning) {
  launch();
  controller_->refresh();
  EXPECT_EQ(noted(), refreshed("Running — Stop"));
}

TEST_F(RunState, isShownAsStopped) {
  launchStopped();
  controller_->refresh();
  EXPECT_EQ(noted(), refreshed("Stopped — Start"));
}

TEST_F(RunState, isShownAsAccessRequired) {
  launchWithoutAccess();
  controller_->refresh();
  EXPECT_EQ(noted(), refreshed("Full Disk Access Required — Start"));
}

TEST_F(RunState, showsAccessRequiredRatherThanRunning) {
  launch();
  controller_->needsAccess = true;
  controller_->refresh();
  EXPECT_EQ(status_->title(), accessTitle);
}

TEST_F(RunState, keepsTheStatusLineEnabled) {
  launch();
  status_->setEnabled(false);
  menu_->setAutoenablesItems(true);
  controller_->refresh();
  EXPECT_TRUE(status_->isEnabled());
  EXPECT_FALSE(menu_->autoenablesItems());
}

// --- stop ---

TEST_F(RunState, stopLeadsFromRunningToStopped) {
  launch();
  controller_->stop();
  expectStopped();
  EXPECT_EQ(noted(), (Entries{"set sortingPaused true"} + refreshed(stoppedTitle)));
}

TEST_F(RunState, stopInvalidatesTheTimerBeforeItStoresTheChoice) {
  launch();
  storeDaily(9, 30);
  controller_->scheduleDaily();
  noted();
  controller_->stop();
  EXPECT_EQ(noted(),
            (Entries{"invalidate at 2026-09-21 09:30:00", "set sortingPaused true"} + refreshed(stoppedTitle)));
}

TEST_F(RunState, statusLineStopsLikeStop) {
  launch();
  storeDaily(9, 30);
  controller_->scheduleDaily();
  noted();
  controller_->toggleRunning();
  expectStopped();
  EXPECT_EQ(noted(),
            (Entries{"invalidate at 2026-09-21 09:30:00", "set sortingPaused true"} + refreshed(stoppedTitle)));
}

TEST_F(RunState, staysStoppedAfterARelaunch) {
  launch();
  controller_->toggleRunning();
  launch();
  expectStopped();
}

// --- start ---

TEST_F(RunState, startLeadsFromStoppedToRunning) {
  launchStopped();
  storeDaily(9, 30);
  controller_->start();
  expectRunning();
  EXPECT_EQ(noted(),
            (Entries{"read " + bookmarks, "set bookmarkAccessPreviouslyGranted true", "set sortingPaused false"} +
             refreshed(runningTitle) + Entries{"timer at 2026-09-21 09:30:00"}));
}

TEST_F(RunState, statusLineStartsFromStopped) {
  launchStopped();
  controller_->toggleRunning();
  expectRunning();
  EXPECT_EQ(machine_.defaults.values().at("sortingPaused"), PlistValue(false));
  EXPECT_EQ(machine_.defaults.values().at("bookmarkAccessPreviouslyGranted"), PlistValue(true));
}

TEST_F(RunState, statusLineStartsOnceTheFileIsReadable) {
  launchWithoutAccess();
  storeDaily(9, 30);
  putUnsortedBookmarks();
  controller_->toggleRunning();
  expectRunning();
  EXPECT_EQ(nextSort(), "2026-09-21 09:30:00");
}

TEST_F(RunState, startWithoutAccessKeepsTheStoredChoice) {
  launchStopped();
  removeBookmarks();
  controller_->start();
  expectAccessRequired();
  EXPECT_EQ(noted(), (Entries{"read " + bookmarks} + refreshed(accessTitle)));
  EXPECT_EQ(machine_.defaults.values().at("sortingPaused"), PlistValue(true)) << "the user's choice stays stored";
}

TEST_F(RunState, statusLineWithoutAccessMeansAccessRequired) {
  launchStopped();
  removeBookmarks();
  controller_->toggleRunning();
  expectAccessRequired();
}

TEST_F(RunState, statusLineStillWithoutAccessStoresNothing) {
  launchWithoutAccess();
  controller_->toggleRunning();
  expectAccessRequired();
  EXPECT_EQ(noted(), (Entries{"read " + bookmarks} + refreshed(accessTitle)));
  EXPECT_THAT(machine_.defaults.values(), IsEmpty());
}

TEST_F(RunState, startWithoutAccessInvalidatesTheTimer) {
  launch();
  storeDaily(9, 30);
  controller_->scheduleDaily();
  removeBookmarks();
  controller_->start();
  expectAccessRequired();
  EXPECT_EQ(machine_.loop.armedTimers(), 0);
}

TEST_F(RunState, startWhileRunningRearmsTheTimer) {
  launch();
  storeDaily(9, 30);
  controller_->start();
  controller_->start();
  expectRunning();
  EXPECT_EQ(machine_.loop.armedTimers(), 1);
}

// --- pauseForAccess ---

TEST_F(RunState, pauseForAccessStoresNothing) {
  launch();
  storeDaily(9, 30);
  controller_->scheduleDaily();
  const auto before = machine_.defaults.values();
  noted();
  controller_->pauseForAccess();
  expectAccessRequired();
  EXPECT_EQ(noted(), (Entries{"invalidate at 2026-09-21 09:30:00"} + refreshed(accessTitle)));
  EXPECT_EQ(machine_.defaults.values(), before);
}

TEST_F(RunState, runsAgainAfterAPauseForAccessAndARelaunch) {
  launch();
  controller_->pauseForAccess();
  launch();
  expectRunning();
}

// --- tick ---

TEST_F(RunState, tickSortsUnattended) {
  launch();
  controller_->tick();
  EXPECT_EQ(noted(), (Entries{"read " + bookmarks} + unattendedSort()));
  EXPECT_TRUE(isSorted());
  expectRunning();
  EXPECT_FALSE(automatic);
}

TEST_F(RunState, tickIsBusyAndAutomaticDuringTheWholeSort) {
  launch();
  int checks = 0;
  for (const std::string operation : {"parse", "write atomically", "printed"})
    machine_.journal.after(operation, [&](const std::string&) {
      ++checks;
      EXPECT_TRUE(controller_->busy);
      EXPECT_TRUE(automatic);
    });
  machine_.journal.before("read", [&](const std::string&) { EXPECT_FALSE(controller_->busy) << "the probe"; });
  controller_->tick();
  EXPECT_EQ(checks, 3);
  EXPECT_FALSE(controller_->busy);
  EXPECT_FALSE(automatic);
}

TEST_F(RunState, tickReportsNothingIfAllIsInOrder) {
  launch();
  controller_->tick();
  noted();
  controller_->tick();
  EXPECT_EQ(noted(), (Entries{"read " + bookmarks} + sortOfAFileInOrder()));
}

TEST_F(RunState, tickIsNotBusyAfterAFailedSort) {
  launch();
  machine_.files.put(bookmarks, "damaged");
  controller_->tick();
  expectRunning();
  EXPECT_FALSE(automatic);
  EXPECT_THAT(machine_.output.text(), testing::StartsWith("Bookmarks could not be sorted: "));
}

// A bookmark file whose sort takes long, because most of it is white space.
std::string largeBookmarks() {
  const PlistValue tree = rootNode({folderNode(u"BookmarksBar", {leafNode(u"b"), leafNode(u"a")})});
  return fileOf(tree, PropertyListFormat::xml) + std::string(largeFile, ' ');
}

// The names of those entries that show a sort, in order, with the tool tips.
Entries shown(const Entries& entries) {
  Entries shown;
  for (const std::string& entry : entries)
    for (const std::string name : {"tool tip", "display", "write atomically", "printed", "alert"})
      if (entry.starts_with(name)) shown.push_back(name == "tool tip" || name == "display" ? entry : name);
  return shown;
}

TEST_F(RunState, aLongSortIsShownInTheMenuBar) {
  launch();
  machine_.files.put(bookmarks, largeBookmarks());
  machine_.journal.before("write atomically", [&](const std::string&) {
    EXPECT_EQ(machine_.screen.statusItem()->appearsDisabled(), true);
  });
  controller_->tick();
  EXPECT_THAT(shown(noted()), ElementsAre("tool tip Quillery — sorting…", "display Quillery — sorting…",
                                          "write atomically", "tool tip Quillery", "printed"));
  EXPECT_EQ(machine_.screen.statusItem()->appearsDisabled(), false);
  EXPECT_TRUE(isSorted());
}

TEST_F(RunState, aLongSortIsOverBeforeItsAlert) {
  launch();
  machine_.files.put(bookmarks, std::string(largeFile, ' '));  // cannot be parsed
  controller_->standardUserDriverWillHandleShowingUpdate(false);
  machine_.userInterface.willAnswer(0);
  noted();
  controller_->sortNow();
  EXPECT_THAT(shown(noted()), ElementsAre("tool tip Quillery — sorting…", "display Quillery — sorting…",
                                          "tool tip Quillery — update available", "alert"));
}

TEST_F(RunState, aSortIsNotStoppedByWhatShowsIt) {
  launch();
  machine_.files.put(bookmarks, largeBookmarks());
  machine_.journal.before("display", [](const std::string&) { throw std::bad_alloc(); });
  controller_->tick();
  EXPECT_TRUE(isSorted());
}

TEST_F(RunState, tickDoesNothingWhileStopped) {
  launchStopped();
  controller_->tick();
  EXPECT_THAT(noted(), IsEmpty());
}

TEST_F(RunState, tickDoesNothingWhileBusy) {
  launch();
  controller_->busy = true;
  controller_->tick();
  EXPECT_THAT(noted(), IsEmpty());
  EXPECT_TRUE(controller_->busy);
}

TEST_F(RunState, tickDoesNothingWhileAnUpdateWaits) {
  launch();
  controller_->updateInstallPending = true;
  controller_->tick();
  EXPECT_THAT(noted(), IsEmpty());
}

TEST_F(RunState, tickDoesNothingInAccessRequired) {
  launchWithoutAccess();
  putUnsortedBookmarks();
  controller_->tick();
  EXPECT_THAT(noted(), IsEmpty()) << "only start() leaves this state";
  expectAccessRequired();
}

TEST_F(RunState, tickWithoutAccessMeansAccessRequired) {
  launch();
  storeDaily(9, 30);
  controller_->scheduleDaily();
  removeBookmarks();
  noted();
  controller_->tick();
  expectAccessRequired();
  EXPECT_EQ(noted(), (Entries{"read " + bookmarks, "invalidate at 2026-09-21 09:30:00"} + refreshed(accessTitle)));
}

TEST_F(RunState, runsAgainAfterALostAccessAndARelaunch) {
  launch();
  removeBookmarks();
  controller_->tick();
  launch();
  expectRunning();
}

TEST_F(RunState, tickTreatsARefusedReadLikeAMissingFile) {
  launch();
  machine_.files.failOn("read", EACCES);
  controller_->tick();
  expectAccessRequired();
}

TEST_F(RunState, tickNeitherQuitsNorOpensSafari) {
  launch();
  const int process = startSafari();
  machine_.journal.after("read", [&](const std::string&) { machine_.applications.endProcess(process); });
  controller_->tick();
  for (const std::string& entry : noted())
    EXPECT_FALSE(entry.starts_with("quit") || entry.starts_with("open")) << entry;
}

}  // namespace
