// Sorting around Safari: Sort Now…, the sequence of quitting, sorting and reopening, and the sort on quit.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <string>

#include "app/alert.h"
#include "tests/support/controller_test.h"

namespace {

using namespace std::chrono_literals;
using testing::Contains;
using testing::Each;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;

// The buttons of the question about an open Safari, by index.
constexpr std::size_t quitSortAndReopen = 0;
constexpr std::size_t retry = 1;
constexpr std::size_t cancel = 2;

const Entries probed = {"read " + bookmarks};
const Entries asked = {"read " + bookmarks, "alert Safari is open"};
const Entries reopened = {"locate com.apple.Safari", "open /Applications/Safari.app"};
const Entries gaveUp = {"accessory", "activate", "alert Safari did not close"};

Entries waitingFor(int process) { return {"quit " + std::to_string(process), "timer every 250 ms"}; }
constexpr const char* unknownMessage = "It is unknown whether Safari is running, ";
const Entries doneWaiting = {"invalidate every 250 ms"};

class SafariOrchestration : public ControllerTest {
 protected:
  SafariOrchestration() { launch(); }

  void expectIdle() const {
    EXPECT_FALSE(controller_->busy);
    EXPECT_FALSE(automatic);
    EXPECT_EQ(controller_->quitTimer, nullptr);
  }
  void expectWaiting() const {
    EXPECT_TRUE(controller_->busy);
    ASSERT_NE(controller_->quitTimer, nullptr);
    EXPECT_TRUE(controller_->quitTimer->isValid());
  }
  // Starts one Safari and a sequence that waits for it to quit. Returns Safari's process identifier.
  int startWaiting(const QuitBehavior& behavior, bool quiet = true) {
    const int process = startSafari(behavior);
    controller_->closeSortReopen(quiet);
    noted();
    return process;
  }
};

TEST_F(SafariOrchestration, hasItsDeadlineAndIntervals) {
  EXPECT_EQ(quitDeadline, 45s);
  EXPECT_EQ(quitPollInterval, 250ms);
  EXPECT_EQ(sortOnQuitDelay, 1s);
}

// --- Sort Now… ---

class SortNow : public SafariOrchestration {};

TEST_F(SortNow, sortsAtOnceAndShowsTheResultIfSafariIsClosed) {
  machine_.userInterface.willAnswer(0, [&] {
    EXPECT_TRUE(controller_->busy);
    EXPECT_FALSE(automatic);
  });
  controller_->sortNow();
  EXPECT_EQ(noted(), (probed + attendedSort()));
  EXPECT_EQ(machine_.userInterface.alerts().at(0).informativeText, sortedMessage());
  expectIdle();
}

TEST_F(SortNow, reportsThatAllIsInOrder) {
  controller_->tick();
  noted();
  machine_.userInterface.willAnswer(0);
  controller_->sortNow();
  EXPECT_EQ(noted(), (probed + Entries{"bundle path"} + sortOfAFileInOrder() +
                      Entries{"accessory", "activate", "alert Already sorted"}));
}

TEST_F(SortNow, showsAFailure) {
  machine_.files.put(bookmarks, "damaged");
  machine_.userInterface.willAnswer(0);
  controller_->sortNow();
  EXPECT_EQ(machine_.userInterface.alerts().at(0).messageText, "Bookmarks could not be sorted");
  expectIdle();
}

TEST_F(SortNow, showsThatSafariIsUnknown) {
  machine_.applications.setUnresponsive(true);
  machine_.userInterface.willAnswer(0);
  controller_->sortNow();
  EXPECT_EQ(machine_.userInterface.alerts().at(0).messageText, "Bookmarks could not be sorted");
  EXPECT_THAT(machine_.userInterface.alerts().at(0).informativeText, StartsWith(unknownMessage));
  EXPECT_FALSE(isSorted());
  expectIdle();
}

TEST_F(SortNow, sortsEvenWhileAutomaticSortingIsStopped) {
  controller_->stop();
  machine_.userInterface.willAnswer(0);
  controller_->sortNow();
  EXPECT_TRUE(isSorted());
  EXPECT_FALSE(controller_->enabled);
}

TEST_F(SortNow, neitherQuitsNorOpensAClosedSafari) {
  machine_.userInterface.willAnswer(0);
  controller_->sortNow();
  EXPECT_EQ(machine_.journal.count("quit"), 0);
  EXPECT_EQ(machine_.journal.count("open"), 0);
}

TEST_F(SortNow, asksAboutAnOpenSafariWithoutActivating) {
  startSafari();
  machine_.userInterface.willAnswer(cancel, [&] { EXPECT_FALSE(controller_->busy); });
  controller_->sortNow();
  EXPECT_EQ(noted(), asked);
  const Alert& alert = machine_.userInterface.alerts().at(0);
  EXPECT_EQ(alert.messageText, "Safari is open");
  EXPECT_EQ(alert.informativeText,
            "Quit Safari normally, sort your bookmarks, then reopen Safari. Any Safari save prompt must be resolved "
            "before sorting can continue.");
  EXPECT_THAT(alert.buttons, ElementsAre("Quit Safari, Sort & Reopen", "Retry", "Cancel"));
}

TEST_F(SortNow, cancelDoesNothing) {
  startSafari();
  machine_.userInterface.willAnswer(cancel);
  controller_->sortNow();
  machine_.loop.advance(60s);
  EXPECT_EQ(noted(), asked);
  EXPECT_EQ(safaris(), 1);
  expectIdle();
}

TEST_F(SortNow, anyOtherAnswerDoesNothing) {
  startSafari();
  machine_.userInterface.willAnswer(1000);
  controller_->sortNow();
  EXPECT_EQ(noted(), asked);
  expectIdle();
}

TEST_F(SortNow, retrySortsAtOnceIfTheUserQuitSafari) {
  const int process = startSafari();
  machine_.userInterface.willAnswer(retry, [&] { machine_.applications.endProcess(process); });
  machine_.userInterface.willAnswer(0);
  controller_->sortNow();
  EXPECT_EQ(noted(), (asked + probed + attendedSort()));
  EXPECT_EQ(machine_.journal.count("open"), 0) << "the user had quit it";
}

TEST_F(SortNow, retryAsksAgainWhileSafariIsOpen) {
  startSafari();
  for (const std::size_t answer : {retry, retry, cancel}) machine_.userInterface.willAnswer(answer);
  controller_->sortNow();
  EXPECT_EQ(noted(), (asked + asked + asked));
}

TEST_F(SortNow, retryChecksAccessAgain) {
  startSafari();
  machine_.userInterface.willAnswer(retry, [&] { removeBookmarks(); });
  controller_->sortNow();
  EXPECT_EQ(noted(), (asked + probed + refreshed(accessTitle)));
}

TEST_F(SortNow, confirmationAsksSafariToQuit) {
  const int process = startSafari();
  machine_.userInterface.willAnswer(quitSortAndReopen);
  controller_->sortNow();
  EXPECT_EQ(noted(), (asked + probed + waitingFor(process)));
  expectWaiting();
}

TEST_F(SortNow, confirmationPrintsTheResultAndReopensSafari) {
  startSafari();
  machine_.userInterface.willAnswer(quitSortAndReopen);
  controller_->sortNow();
  noted();
  machine_.loop.advance(1s);
  EXPECT_EQ(noted(), (doneWaiting + unattendedSort() + reopened));
  expectIdle();
}

TEST_F(SortNow, confirmationShowsThatSafariDidNotClose) {
  startSafari({.quitsAfter = std::nullopt});
  machine_.userInterface.willAnswer(quitSortAndReopen);
  controller_->sortNow();
  noted();
  machine_.userInterface.willAnswer(0);
  machine_.loop.advance(45s);
  EXPECT_EQ(noted(), (doneWaiting + gaveUp)) << "a sequence from the dialog is not quiet";
}

TEST_F(SortNow, confirmationDoesNotOpenASafariThatHadQuit) {
  const int process = startSafari();
  machine_.userInterface.willAnswer(quitSortAndReopen, [&] { machine_.applications.endProcess(process); });
  controller_->sortNow();
  EXPECT_EQ(noted(), (asked + probed + unattendedSort()));
}

TEST_F(SortNow, isIgnoredWhileBusy) {
  controller_->busy = true;
  controller_->sortNow();
  EXPECT_THAT(noted(), IsEmpty());
}

TEST_F(SortNow, isIgnoredWhileAnUpdateWaits) {
  controller_->updateInstallPending = true;
  controller_->sortNow();
  EXPECT_THAT(noted(), IsEmpty());
}

TEST_F(SortNow, withoutAccessMeansAccessRequiredAndNoDialog) {
  storeDaily(9, 30);
  controller_->scheduleDaily();
  removeBookmarks();
  noted();
  controller_->sortNow();
  EXPECT_EQ(noted(), (probed + Entries{"invalidate at 2026-09-21 09:30:00"} + refreshed(accessTitle)));
  EXPECT_FALSE(controller_->enabled);
  EXPECT_TRUE(controller_->needsAccess);
  EXPECT_THAT(machine_.defaults.values(), Not(Contains(testing::Key("sortingPaused"))));
}

// --- Quitting, sorting, reopening ---

class CloseSortReopen : public SafariOrchestration {};

TEST_F(CloseSortReopen, sortsAtOnceAndDoesNotOpenAClosedSafari) {
  controller_->closeSortReopen(true);
  EXPECT_EQ(noted(), (probed + unattendedSort()));
  expectIdle();
}

TEST_F(CloseSortReopen, printsTheResultEvenIfNotQuiet) {
  controller_->closeSortReopen(false);
  EXPECT_EQ(noted(), (probed + unattendedSort()));
}

TEST_F(CloseSortReopen, printsThatSafariIsUnknownAndDoesNotSort) {
  machine_.applications.setUnresponsive(true);
  controller_->closeSortReopen(true);
  EXPECT_THAT(machine_.output.text(), StartsWith(std::string("Bookmarks could not be sorted: ") + unknownMessage));
  EXPECT_FALSE(isSorted());
  EXPECT_EQ(machine_.journal.count("open"), 0);
  expectIdle();
}

TEST_F(CloseSortReopen, waitsWhileSafariIsUnknown) {
  startWaiting({.quitsAfter = 2s});
  machine_.applications.setUnresponsive(true);
  machine_.loop.advance(44s);
  EXPECT_THAT(noted(), IsEmpty());
  expectWaiting();
  machine_.applications.setUnresponsive(false);
  machine_.loop.advance(250ms);
  EXPECT_EQ(noted(), (doneWaiting + unattendedSort() + reopened));
}

TEST_F(CloseSortReopen, reopensSafariIfItIsUnknownAtTheDeadline) {
  startWaiting({.quitsAfter = 2s});
  machine_.applications.setUnresponsive(true);
  machine_.loop.advance(45s);
  EXPECT_THAT(machine_.output.text(), StartsWith(std::string("Bookmarks could not be sorted: ") + unknownMessage));
  EXPECT_FALSE(isSorted());
  EXPECT_EQ(machine_.journal.count("open"), 1);
  expectIdle();
}

TEST_F(CloseSortReopen, quitsWaitsSortsReopensThenClearsBusy) {
  const int process = startSafari({.quitsAfter = 2s});
  controller_->closeSortReopen(true);
  EXPECT_EQ(noted(), (probed + waitingFor(process)));
  EXPECT_THAT(controller_->ownQuitPIDs, ElementsAre(process));
  expectWaiting();
  machine_.loop.advance(2s - 1ms);
  EXPECT_THAT(noted(), IsEmpty());
  machine_.journal.after(
      "open", [&](const std::string&) { EXPECT_TRUE(controller_->busy) << "until the end of the sequence"; });
  machine_.loop.advance(1ms);
  EXPECT_EQ(noted(), (doneWaiting + unattendedSort() + reopened));
  EXPECT_TRUE(isSorted());
  EXPECT_EQ(safaris(), 1);
  EXPECT_THAT(controller_->ownQuitPIDs, IsEmpty());
  expectIdle();
}

TEST_F(CloseSortReopen, pollsFourTimesASecond) {
  startWaiting({.quitsAfter = std::nullopt});
  const int before = machine_.journal.count("running?");
  machine_.loop.advance(249ms);
  EXPECT_EQ(machine_.journal.count("running?"), before);
  machine_.loop.advance(1ms);
  EXPECT_EQ(machine_.journal.count("running?"), before + 1);
  machine_.loop.advance(1s);
  EXPECT_EQ(machine_.journal.count("running?"), before + 5);
}

TEST_F(CloseSortReopen, isAutomaticOnlyWhileItSorts) {
  startWaiting({.quitsAfter = 1s});
  EXPECT_FALSE(automatic);
  machine_.journal.before("write atomically", [&](const std::string&) { EXPECT_TRUE(automatic); });
  machine_.journal.before("locate", [&](const std::string&) { EXPECT_FALSE(automatic); });
  machine_.loop.advance(1s);
  EXPECT_EQ(sorts(), 1);
  EXPECT_FALSE(automatic);
}

TEST_F(CloseSortReopen, hasNoQuitTimerWhileItSorts) {
  startWaiting({.quitsAfter = 1s});
  int checks = 0;
  for (const std::string operation : {"parse", "write atomically", "printed"})
    machine_.journal.before(operation, [&](const std::string&) {
      ++checks;
      EXPECT_EQ(controller_->quitTimer, nullptr);
    });
  machine_.loop.advance(1s);
  EXPECT_EQ(checks, 3);
}

TEST_F(CloseSortReopen, reopensSafariEvenIfAllWasInOrder) {
  controller_->tick();
  startWaiting({.quitsAfter = 1s});
  machine_.loop.advance(1s);
  EXPECT_EQ(noted(), (doneWaiting + sortOfAFileInOrder() + reopened));
}

TEST_F(CloseSortReopen, reopensSafariEvenIfTheSortFailed) {
  startWaiting({.quitsAfter = 1s});
  machine_.files.put(bookmarks, "damaged");
  machine_.loop.advance(1s);
  EXPECT_EQ(safaris(), 1);
  EXPECT_THAT(machine_.output.text(), StartsWith("Bookmarks could not be sorted: "));
  expectIdle();
}

TEST_F(CloseSortReopen, asksBothSafarisAndWaitsForTheLast) {
  const int first = startSafari({.quitsAfter = 1s});
  const int second = startSafari({.quitsAfter = 5s});
  controller_->closeSortReopen(true);
  EXPECT_EQ(noted(), (probed + Entries{"quit " + std::to_string(first), "quit " + std::to_string(second),
                                       "timer every 250 ms"}));
  EXPECT_THAT(controller_->ownQuitPIDs, ElementsAre(first, second));
  machine_.loop.advance(5s - 1ms);
  EXPECT_THAT(noted(), IsEmpty());
  EXPECT_THAT(controller_->ownQuitPIDs, ElementsAre(second));
  machine_.loop.advance(1ms);
  EXPECT_EQ(noted(), (doneWaiting + unattendedSort() + reopened));
}

TEST_F(CloseSortReopen, waitsForASafariThatWasStartedMeanwhile) {
  startWaiting({.quitsAfter = 1s});
  machine_.loop.elsewhere(500ms, [&] { startSafari(); });
  machine_.loop.advance(44s);
  EXPECT_EQ(sorts(), 0);
  expectWaiting();
  machine_.applications.end(safari);
  machine_.loop.advance(250ms);
  EXPECT_EQ(sorts(), 1);
}

TEST_F(CloseSortReopen, waitsForASafariThatRestartsItself) {
  startWaiting({.quitsAfter = 1100ms, .restartsAfter = 100ms});
  machine_.loop.advance(44s);
  EXPECT_EQ(sorts(), 0) << "it was gone only between two polls";
  machine_.loop.advance(1s);
  EXPECT_EQ(sorts(), 0);
  expectIdle();
}

TEST_F(CloseSortReopen, waitsForButDoesNotTrackASafariThatRefuses) {
  const int process = startSafari({.isRefused = true});
  machine_.journal.before("quit", [&](const std::string&) {
    EXPECT_THAT(controller_->ownQuitPIDs, ElementsAre(process)) << "tracked before the request";
  });
  controller_->closeSortReopen(true);
  EXPECT_THAT(controller_->ownQuitPIDs, IsEmpty());
  expectWaiting();
  machine_.loop.advance(10s);
  machine_.applications.endProcess(process);
  machine_.loop.advance(250ms);
  EXPECT_EQ(sorts(), 1);
  EXPECT_EQ(safaris(), 1) << "it is reopened";
}

TEST_F(CloseSortReopen, sortsIfSafariQuitsAfter44Point9Seconds) {
  startWaiting({.quitsAfter = 44900ms});
  machine_.loop.advance(45s);
  EXPECT_EQ(noted(), (doneWaiting + unattendedSort() + reopened));
}

TEST_F(CloseSortReopen, sortsIfSafariQuitsAtTheDeadline) {
  startWaiting({.quitsAfter = 45s});
  machine_.loop.advance(45s);
  EXPECT_EQ(sorts(), 1);
}

TEST_F(CloseSortReopen, waitsUntilThePollAtTheDeadline) {
  startWaiting({.quitsAfter = std::nullopt});
  machine_.loop.advance(45s - 1ms);
  expectWaiting();
  machine_.loop.advance(1ms);
  expectIdle();
}

TEST_F(CloseSortReopen, countsThe45SecondsFromTheEndOfTheQuitRequests) {
  startSafari({.quitsAfter = std::nullopt});
  machine_.journal.before("quit", [&](const std::string&) { machine_.loop.occupy(10s); });
  controller_->closeSortReopen(true);
  machine_.loop.advance(45s - 1ms);
  expectWaiting();
  machine_.loop.advance(1ms);
  expectIdle();
}

TEST_F(CloseSortReopen, givesUpIfSafariIsOpenAfter45Seconds) {
  const int process = startWaiting({.quitsAfter = std::nullopt}, false);
  machine_.userInterface.willAnswer(0, [&] {
    EXPECT_FALSE(controller_->busy) << "cleared before the alert";
    EXPECT_THAT(controller_->ownQuitPIDs, IsEmpty());
  });
  EXPECT_THAT(controller_->ownQuitPIDs, ElementsAre(process));
  machine_.loop.advance(45s);
  EXPECT_EQ(noted(), (doneWaiting + gaveUp)) << "nothing is sorted or opened";
  EXPECT_EQ(machine_.userInterface.alerts().at(0).informativeText,
            "Sorting was skipped. Resolve any Safari save prompts and try again. Safari was not force-quit.");
  EXPECT_EQ(safaris(), 1);
  expectIdle();
  machine_.loop.advance(10min);
  EXPECT_THAT(noted(), IsEmpty()) << "the alert is shown once";
}

TEST_F(CloseSortReopen, givesUpSilentlyIfQuiet) {
  startWaiting({.quitsAfter = std::nullopt});
  machine_.loop.advance(45s);
  EXPECT_EQ(noted(), doneWaiting);
  EXPECT_EQ(machine_.output.text(), "");
  EXPECT_THAT(controller_->ownQuitPIDs, IsEmpty());
  expectIdle();
}

TEST_F(CloseSortReopen, givesUpIfOneOfTwoSafarisStaysOpen) {
  startSafari({.quitsAfter = 1s});
  startWaiting({.quitsAfter = std::nullopt});
  machine_.loop.advance(45s);
  EXPECT_EQ(sorts(), 0);
  EXPECT_THAT(controller_->ownQuitPIDs, IsEmpty());
  EXPECT_EQ(machine_.journal.count("open"), 0);
}

TEST_F(CloseSortReopen, givesUpAndForgetsOnlyTheProcessesThatItAsked) {
  machine_.workspace.delayNotifications(5min);
  machine_.workspace.setBehavior({.quitsAfter = std::nullopt});
  const int earlier = startWaiting({.quitsAfter = 1s});
  machine_.loop.advance(1s);
  controller_->closeSortReopen(true);  // asks the reopened Safari, which stays open
  EXPECT_EQ(controller_->ownQuitPIDs.size(), 2U);
  machine_.loop.advance(45s);
  expectIdle();
  EXPECT_THAT(controller_->ownQuitPIDs, ElementsAre(earlier)) << "its end is not reported yet";
}

TEST_F(CloseSortReopen, givesUpAtTheFirstPollAfterALongSleep) {
  startWaiting({.quitsAfter = std::nullopt});
  machine_.sleep(1h);
  machine_.loop.advance(250ms);
  expectIdle();
  EXPECT_EQ(sorts(), 0);
}

TEST_F(CloseSortReopen, sortsAfterALongSleepIfSafariHasQuit) {
  startWaiting({.quitsAfter = 100ms});
  machine_.loop.occupy(100ms);
  machine_.sleep(1h);
  machine_.loop.advance(250ms);
  EXPECT_EQ(sorts(), 1);
}

TEST_F(CloseSortReopen, canBeStartedAgainAfterItGaveUp) {
  startWaiting({.quitsAfter = std::nullopt});
  machine_.loop.advance(45s);
  machine_.applications.end(safari);
  controller_->closeSortReopen(true);
  EXPECT_EQ(sorts(), 1);
}

TEST_F(CloseSortReopen, isIgnoredWhileBusy) {
  controller_->busy = true;
  controller_->closeSortReopen(false);
  EXPECT_THAT(noted(), IsEmpty());
}

TEST_F(CloseSortReopen, isIgnoredWhileAnotherOneWaits) {
  startWaiting({.quitsAfter = 2s});
  controller_->closeSortReopen(false);
  EXPECT_THAT(noted(), IsEmpty());
  machine_.loop.advance(60s);
  EXPECT_EQ(sorts(), 1);
}

TEST_F(CloseSortReopen, isIgnoredWhileAnUpdateWaits) {
  controller_->updateInstallPending = true;
  controller_->closeSortReopen(false);
  EXPECT_THAT(noted(), IsEmpty());
}

TEST_F(CloseSortReopen, withoutAccessChangesNothing) {
  startSafari();
  removeBookmarks();
  controller_->closeSortReopen(false);
  EXPECT_EQ(noted(), probed) << "no quit request, no alert, no new status line";
  EXPECT_TRUE(controller_->enabled);
  EXPECT_FALSE(controller_->needsAccess);
  expectIdle();
}

TEST_F(CloseSortReopen, runsEvenIfSortingIsStopped) {
  controller_->stop();
  controller_->closeSortReopen(false);
  EXPECT_TRUE(isSorted());
}

TEST_F(CloseSortReopen, opensNothingIfSafariCannotBeLocated) {
  machine_.workspace.uninstall(safari);
  startWaiting({.quitsAfter = 1s});
  machine_.loop.advance(1s);
  EXPECT_EQ(noted(), (doneWaiting + unattendedSort() + Entries{"locate com.apple.Safari"}));
  expectIdle();
}

TEST_F(CloseSortReopen, keepsItsResultIfSafariCannotBeOpened) {
  machine_.workspace.breakOpening();
  startWaiting({.quitsAfter = 1s});
  machine_.loop.advance(1s);
  EXPECT_EQ(noted(), (doneWaiting + unattendedSort() + reopened)) << "the failure is not reported";
  EXPECT_TRUE(isSorted());
  expectIdle();
}

TEST_F(CloseSortReopen, leavesTheFileIfSafariStartsDuringTheSort) {
  startWaiting({.quitsAfter = 1s});
  machine_.journal.after("serialize", [&](const std::string&) { startSafari(); });
  machine_.loop.advance(1s);
  EXPECT_EQ(sorts(), 0);
  EXPECT_FALSE(isSorted());
  expectIdle();
}

// --- After the user quits Safari ---

class SortOnQuit : public SafariOrchestration {};

TEST_F(SortOnQuit, sortsOneSecondLater) {
  const int process = startSafari();
  machine_.applications.endProcess(process);
  machine_.loop.advance(1s - 1ms);
  EXPECT_THAT(noted(), ElementsAre("after 1000 ms"));
  machine_.loop.advance(1ms);
  EXPECT_EQ(noted(), (probed + unattendedSort()));
  EXPECT_EQ(machine_.journal.count("open"), 0) << "Safari stays closed";
  expectIdle();
}

TEST_F(SortOnQuit, printsThatSafariIsUnknownAndDoesNotSort) {
  machine_.applications.endProcess(startSafari());
  machine_.applications.setUnresponsive(true);
  machine_.loop.advance(1s);
  EXPECT_THAT(machine_.output.text(), StartsWith(std::string("Bookmarks could not be sorted: ") + unknownMessage));
  EXPECT_FALSE(isSorted());
  expectIdle();
}

TEST_F(SortOnQuit, ignoresItsOwnQuit) {
  startWaiting({.quitsAfter = 1s});
  machine_.loop.advance(10s);
  EXPECT_EQ(sorts(), 1);
  EXPECT_EQ(machine_.journal.count("after"), 0);
}

TEST_F(SortOnQuit, sortsAfterALaterQuitByTheUser) {
  startWaiting({.quitsAfter = 1s});
  machine_.loop.advance(10s);
  putUnsortedBookmarks();
  machine_.applications.end(safari);  // the reopened Safari
  machine_.loop.advance(1s);
  EXPECT_EQ(sorts(), 2);
}

TEST_F(SortOnQuit, ignoresItsOwnQuitReportedAfterTheSort) {
  machine_.workspace.delayNotifications(3s);
  const int process = startWaiting({.quitsAfter = 1s});
  machine_.loop.advance(2s);
  EXPECT_EQ(sorts(), 1);
  expectIdle();
  EXPECT_THAT(controller_->ownQuitPIDs, ElementsAre(process)) << "its end is not reported yet";
  machine_.loop.advance(10s);
  EXPECT_THAT(controller_->ownQuitPIDs, IsEmpty());
  EXPECT_EQ(machine_.journal.count("after"), 0);
}

TEST_F(SortOnQuit, sortsAfterAQuitThatFollowsTheGiveUp) {
  startWaiting({.quitsAfter = 50s});
  machine_.loop.advance(50s);
  EXPECT_EQ(sorts(), 0);
  machine_.loop.advance(1s);
  EXPECT_EQ(sorts(), 1);
  EXPECT_EQ(safaris(), 0);
}

TEST_F(SortOnQuit, sortsAfterAQuitThatFollowsAnUnknownDeadline) {
  machine_.workspace.breakOpening();
  const int process = startWaiting({.quitsAfter = std::nullopt});
  machine_.applications.setUnresponsive(true);
  machine_.loop.advance(45s);
  EXPECT_EQ(sorts(), 0);
  machine_.applications.setUnresponsive(false);
  machine_.applications.endProcess(process);
  machine_.loop.advance(1s);
  EXPECT_EQ(sorts(), 1);
}

TEST_F(SortOnQuit, doesNotSortWhileStopped) {
  controller_->stop();
  startSafari();
  machine_.applications.end(safari);
  noted();
  machine_.loop.advance(2s);
  EXPECT_THAT(noted(), IsEmpty());
}

TEST_F(SortOnQuit, doesNotSortIfStoppedWithinTheSecond) {
  startSafari();
  machine_.applications.end(safari);
  machine_.loop.advance(500ms);
  controller_->stop();
  machine_.loop.advance(2s);
  EXPECT_EQ(sorts(), 0);
}

TEST_F(SortOnQuit, doesNotSortIfTheSettingIsOff) {
  machine_.defaults.put("sortOnSafariQuit", false);
  startSafari();
  machine_.applications.end(safari);
  machine_.loop.advance(2s);
  EXPECT_THAT(noted(), IsEmpty());
}

TEST_F(SortOnQuit, doesNotSortIfTurnedOffWithinTheSecond) {
  startSafari();
  machine_.applications.end(safari);
  machine_.loop.advance(500ms);
  machine_.defaults.put("sortOnSafariQuit", false);
  const int questions = machine_.journal.count("running?");
  machine_.loop.advance(2s);
  EXPECT_EQ(sorts(), 0);
  EXPECT_EQ(machine_.journal.count("running?"), questions) << "it does not even look for Safari";
}

TEST_F(SortOnQuit, doesNotSortWhileBusy) {
  startSafari();
  controller_->busy = true;
  machine_.applications.end(safari);
  machine_.loop.advance(2s);
  EXPECT_THAT(noted(), IsEmpty());
}

TEST_F(SortOnQuit, doesNotSortIfBusyASecondLater) {
  startSafari();
  machine_.applications.end(safari);
  machine_.loop.advance(500ms);
  controller_->busy = true;
  machine_.loop.advance(2s);
  EXPECT_EQ(sorts(), 0);
}

TEST_F(SortOnQuit, doesNotSortWhileAnUpdateWaits) {
  controller_->updateInstallPending = true;
  startSafari();
  machine_.applications.end(safari);
  machine_.loop.advance(2s);
  EXPECT_THAT(noted(), ElementsAre("after 1000 ms")) << "tick() finds the update a second later";
}

TEST_F(SortOnQuit, doesNotSortIfSafariRunsAgainASecondLater) {
  startSafari();
  machine_.applications.end(safari);
  machine_.loop.advance(999ms);
  startSafari();
  machine_.loop.advance(1s);
  EXPECT_THAT(noted(), ElementsAre("after 1000 ms"));
}

TEST_F(SortOnQuit, doesNotSortWhileAnotherSafariRuns) {
  const int process = startSafari();
  startSafari();
  machine_.applications.endProcess(process);
  machine_.loop.advance(2s);
  EXPECT_EQ(sorts(), 0);
}

TEST_F(SortOnQuit, sortsOnceIfTwoSafarisQuitTogether) {
  startSafari();
  startSafari();
  machine_.applications.end(safari);
  machine_.loop.advance(2s);
  EXPECT_EQ(sorts(), 1) << "the second attempt finds all in order";
}

TEST_F(SortOnQuit, withoutAccessMeansAccessRequired) {
  startSafari();
  machine_.applications.end(safari);
  removeBookmarks();
  machine_.loop.advance(1s);
  EXPECT_EQ(status_->title(), accessTitle);
}

TEST_F(SortOnQuit, ignoresOtherApplications) {
  for (const char* other : {"com.apple.SafariTechnologyPreview", "com.apple.safari", "com.apple.Safari2", ""}) {
    machine_.applications.start(other);
    machine_.applications.end(other);
  }
  machine_.loop.advance(2s);
  EXPECT_THAT(noted(), IsEmpty());
}

TEST_F(SortOnQuit, ignoresANotificationWithoutAnApplication) {
  machine_.workspace.notifyTermination(nullptr);
  machine_.loop.advance(2s);
  EXPECT_THAT(noted(), IsEmpty());
}

TEST_F(SortOnQuit, ignoresAnApplicationWithoutAnIdentifier) {
  class Nameless : public RunningApplication {
    int processIdentifier() const override { return 7; }
    std::optional<std::string> bundleIdentifier() const override { return std::nullopt; }
    bool terminate() override { return false; }
  };
  machine_.workspace.notifyTermination(std::make_shared<Nameless>());
  machine_.loop.advance(2s);
  EXPECT_THAT(noted(), IsEmpty());
}

TEST_F(SortOnQuit, forgetsItsOwnQuitOnceReported) {
  const int process = startWaiting({.quitsAfter = 400ms});
  EXPECT_THAT(controller_->ownQuitPIDs, ElementsAre(process));
  machine_.loop.advance(400ms);
  EXPECT_THAT(controller_->ownQuitPIDs, IsEmpty());
  expectWaiting();
}

TEST_F(SortOnQuit, forgetsItsOwnQuitEvenIfSortingIsStopped) {
  startWaiting({.quitsAfter = 400ms});
  controller_->stop();
  machine_.loop.advance(400ms);
  EXPECT_THAT(controller_->ownQuitPIDs, IsEmpty());
}

TEST_F(SortOnQuit, forgetsItsOwnQuitEvenIfTheSettingIsOff) {
  startWaiting({.quitsAfter = 400ms});
  machine_.defaults.put("sortOnSafariQuit", false);
  machine_.loop.advance(400ms);
  EXPECT_THAT(controller_->ownQuitPIDs, IsEmpty());
}

// --- In every sequence ---

TEST_F(SafariOrchestration, staysInTheBackgroundWhileUnattended) {
  storeDaily(9, 30);
  controller_->scheduleDaily();
  startSafari({.quitsAfter = std::nullopt});
  machine_.loop.advanceTo(utc("2026-09-21 09:31:00"));
  machine_.applications.end(safari);
  machine_.loop.advance(2s);
  machine_.files.put(bookmarks, "damaged");
  controller_->tick();
  EXPECT_THAT(noted(), Each(Not(testing::AnyOf(StartsWith("alert"), StartsWith("activate"), StartsWith("accessory")))));
}

}  // namespace
