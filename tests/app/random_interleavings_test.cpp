// Ten thousand random sequences of everything that can happen to the controller, also while dialogs are open. The
// invariants are checked after each event.
#include <gtest/gtest.h>

#include <array>
#include <chrono>
#include <functional>
#include <map>
#include <random>
#include <string>
#include <vector>

#include "app/alert.h"
#include "tests/support/controller_test.h"
#include "tests/support/random_seed.h"

namespace {

using namespace std::chrono_literals;

constexpr int mostEvents = 30;
constexpr int deepestDialog = 2;

// Counts what happened in all courses, because courses in which little happens would prove nothing.
using Tally = std::map<std::string, int>;

// One random sequence of events.
class Course : private ControllerMachine {
 public:
  Course(unsigned seed, unsigned number, Tally& tally) : tally_(tally) {
    std::seed_seq seeds{seed, number};
    random_.seed(seeds);
    watchOperations();
    if (chance(2)) storeDaily(below(24), below(60), someDays());
    if (chance(5)) machine_.defaults.put("sortingPaused", true);
    if (chance(5)) removeBookmarks();
    if (chance(4)) machine_.workspace.delayNotifications(milliseconds(3000));
    machine_.userInterface.willAnswerAll([this](const Alert& alert) { return answer(alert); });
    launch();
    controller_->scheduleDaily();
  }

  void run() {
    for (int event = below(mostEvents) + 1; event > 0 && !testing::Test::HasFailure(); --event) runRandomEvent();
    settle();
  }

 private:
  // --- Chance ---

  int below(int limit) { return std::uniform_int_distribution(0, limit - 1)(random_); }
  template <class Choices>
  const auto& oneOf(const Choices& choices) {
    return choices.at(static_cast<std::size_t>(below(static_cast<int>(choices.size()))));
  }
  bool chance(int oneIn) { return below(oneIn) == 0; }
  std::chrono::milliseconds milliseconds(int limit) { return std::chrono::milliseconds(below(limit)); }
  std::vector<int> someDays() {
    std::vector<int> days;
    if (chance(4)) return days;
    for (int day = 1; day <= 7; ++day)
      if (!chance(3)) days.push_back(day);
    return days;
  }
  QuitBehavior someBehavior() {
    QuitBehavior behavior;
    behavior.isRefused = chance(8);
    behavior.quitsAfter = milliseconds(50'000);
    if (chance(2)) behavior.quitsAfter = milliseconds(2'000);
    if (chance(6)) behavior.quitsAfter = std::nullopt;
    if (chance(6)) behavior.restartsAfter = milliseconds(5'000);
    return behavior;
  }

  // --- What can happen ---

  void runRandomEvent() {
    using Event = void (Course::*)();
    static constexpr std::array<Event, 27> events = {
        &Course::timePasses,        &Course::timePasses,          &Course::timePasses,
        &Course::aTimerIsDue,       &Course::threadIsOccupied,    &Course::machineSleeps,
        &Course::clockIsSet,        &Course::safariStarts,        &Course::safariStarts,
        &Course::userQuitsSafari,   &Course::userQuitsSafari,     &Course::userTogglesSorting,
        &Course::userSortsNow,      &Course::userSortsNow,        &Course::userSavesSchedule,
        &Course::accessIsLost,      &Course::accessComesBack,     &Course::bookmarksChange,
        &Course::aReadFails,        &Course::aWriteFails,         &Course::safariStartsDuringASort,
        &Course::updateAsks,        &Course::updateSessionEnds,   &Course::settingsAreDamaged,
        &Course::notificationIsOdd, &Course::programIsRelaunched, &Course::busHangsOrReplies};
    (this->*oneOf(events))();
    expectInvariants();
  }

  void timePasses() { machine_.loop.advance(milliseconds(chance(3) ? 120'000 : 2'000)); }
  void aTimerIsDue() {
    const std::string next = machine_.loop.nextTimer();
    if (next != "none") machine_.loop.advanceTo(std::max(utc(next), machine_.loop.now()));
  }
  void threadIsOccupied() { machine_.loop.occupy(milliseconds(200'000)); }
  void machineSleeps() {
    machine_.sleep(milliseconds(100'000'000), chance(2) ? VirtualMainLoop::Place::front : VirtualMainLoop::Place::back);
  }
  void clockIsSet() { machine_.loop.setClock(machine_.loop.now() + milliseconds(7'200'000) - 1h); }
  void safariStarts() { startSafari(someBehavior()); }
  void userQuitsSafari() {
    if (chance(2)) return machine_.applications.end(safari);
    machine_.applications.endProcess(501 + below(8));
  }
  void userTogglesSorting() {
    isUserChoosing_ = true;
    controller_->toggleRunning();
    isUserChoosing_ = false;
  }
  void userSortsNow() { controller_->sortNow(); }
  void userSavesSchedule() {
    saveSchedule({!chance(4), someDays(), !chance(4), machine_.loop.now() + milliseconds(86'400'000)});
  }
  void accessIsLost() { removeBookmarks(); }
  void accessComesBack() { putUnsortedBookmarks(); }
  void bookmarksChange() { bookmarksChangeAt(chance(2) ? "serialize" : "write new"); }
  void bookmarksChangeAt(const std::string& operation) {
    onNext(operation, [this] { putUnsortedBookmarks(); });
  }
  void aReadFails() { failNext("read"); }
  void aWriteFails() { failNext(chance(2) ? "write new" : "write atomically"); }
  void safariStartsDuringASort() {
    static const std::array<std::string, 3> operations = {"bundle path", "parse", "serialize"};
    onNext(oneOf(operations), [this] { startSafari(someBehavior()); });
  }
  void updateAsks() {
    const bool wasBusy = controller_->busy;
    const bool isPostponed = controller_->shouldPostponeRelaunch([this] {
      EXPECT_FALSE(controller_->busy) << "installed in the middle of a sort";
      ++tally_["an update waited for a sort"];
    });
    EXPECT_EQ(isPostponed, wasBusy);
  }
  void updateSessionEnds() { controller_->standardUserDriverWillFinishUpdateSession(); }
  void settingsAreDamaged() {
    static const std::array<PlistValue, 7> values = {u"YES",  7,           0.5,  PlistValue::array({u"a"}),
                                                     Bytes(), PlistDate{}, false};
    static const std::array<std::string, 5> keys = {"sortOnSafariQuit", "scheduleDays", "dailyEnabled", "dailyHour",
                                                    "dailyMinute"};
    machine_.defaults.put(oneOf(keys), oneOf(values));
  }
  void busHangsOrReplies() {
    isBusHung_ = !isBusHung_ && chance(2);
    machine_.applications.setUnresponsive(isBusHung_);
  }
  void notificationIsOdd() { machine_.workspace.notifyTermination(nullptr); }
  void programIsRelaunched() {
    if (dialogs_ > 0) return;  // a modal dialog keeps the user from quitting it
    controller_.reset();
    launch();
    controller_->scheduleDaily();
    ++tally_["the program was relaunched"];
  }

  void onNext(const std::string& operation, std::function<void()> event) {
    machine_.journal.after(
        operation, [event = std::move(event)](const std::string&) { event(); }, machine_.journal.count(operation) + 1);
  }
  void failNext(const std::string& operation) {
    machine_.files.failOn(operation, EIO, machine_.journal.count(operation) + 1);
  }

  // The user: lets events happen while the dialog is open, then presses one of its buttons.
  std::size_t answer(const Alert& alert) {
    ++tally_["alert: " + alert.messageText];
    EXPECT_FALSE(automatic) << alert.messageText;
    const bool isOfTheJob = alert.messageText != "Safari is open" && alert.messageText != "Safari did not close" &&
                            alert.messageText != "Choose a day";
    ++dialogs_;
    jobDialogs_ += isOfTheJob ? 1 : 0;
    if (dialogs_ <= deepestDialog)
      for (int event = below(6); event > 0 && !testing::Test::HasFailure(); --event) runRandomEvent();
    jobDialogs_ -= isOfTheJob ? 1 : 0;
    --dialogs_;
    // Never Retry here, because the job would ask again for as long as Safari stays open.
    if (alert.buttons.size() > 1 && alert.buttons.front() == "Retry") return below(3) < 2 ? 1U : 2U;
    return static_cast<std::size_t>(below(4));
  }

  // --- What must hold at each of these operations ---

  void watchOperations() {
    machine_.journal.beforeEach("parse", [this](const std::string&) {
      EXPECT_EQ(jobDialogs_, 0) << "a second sort inside the first";
      EXPECT_TRUE(controller_->busy);
      EXPECT_FALSE(controller_->updateInstallPending && !isUpdatePostponed()) << "a sort began while an update waits";
    });
    machine_.journal.beforeEach("write atomically", [this](const std::string&) {
      ++tally_["the file was written"];
      EXPECT_EQ(safaris(), 0) << "the file was written while Safari runs";
      EXPECT_FALSE(isBusHung_) << "the file was written while Safari may run";
      EXPECT_TRUE(controller_->busy);
    });
    machine_.journal.beforeEach("quit", [this](const std::string&) {
      ++tally_["Safari was asked to quit"];
      EXPECT_TRUE(controller_->busy);
    });
    machine_.journal.beforeEach("set", [this](const std::string& what) {
      EXPECT_TRUE(isUserChoosing_ || !what.starts_with("sortingPaused")) << "the user did not choose that";
    });
  }
  // True if the update was postponed behind the sort in progress. Otherwise it was pending first, and no sort may have
  // begun.
  bool isUpdatePostponed() const { return controller_->updateWaitTimer != nullptr; }

  bool isWaiting() const { return controller_->quitTimer && controller_->quitTimer->isValid(); }

  void expectInvariants() {
    EXPECT_EQ(controller_->busy, isWaiting() || jobDialogs_ > 0);
    EXPECT_FALSE(isWaiting() && jobDialogs_ > 0) << "two sequences";
    EXPECT_FALSE(automatic);
    EXPECT_FALSE(controller_->enabled && controller_->needsAccess);
    const bool isArmed = controller_->dailyTimer && controller_->dailyTimer->isValid();
    EXPECT_FALSE(isArmed && !controller_->enabled) << "a timer is armed while sorting is stopped";
    EXPECT_EQ(status_->title(), controller_->needsAccess ? accessTitle
                                : controller_->enabled   ? runningTitle
                                                         : stoppedTitle);
    EXPECT_TRUE(controller_->busy || controller_->updateWaitTimer == nullptr || machine_.loop.armedTimers() > 0);
  }

  // Lets every pending timer finish and quits every Safari as its user would.
  void settle() {
    isBusHung_ = false;
    machine_.applications.setUnresponsive(false);
    machine_.loop.advance(2min);
    machine_.applications.end(safari);
    machine_.loop.advance(2min);
    machine_.applications.end(safari);
    machine_.loop.advance(2min);
    expectInvariants();
    EXPECT_FALSE(controller_->busy);
    EXPECT_TRUE(safaris() > 0 || controller_->ownQuitPIDs.empty());
    EXPECT_EQ(controller_->updateWaitTimer, nullptr);
    EXPECT_GE(machine_.journal.count("write new"), sorts()) << "a file was rewritten without a backup";
    ++tally_[controller_->needsAccess ? "ended without access"
             : controller_->enabled   ? "ended running"
                                      : "ended stopped"];
  }

  Tally& tally_;
  std::mt19937 random_;
  int dialogs_ = 0;
  int jobDialogs_ = 0;
  bool isUserChoosing_ = false;
  bool isBusHung_ = false;
};

TEST(RandomInterleavings, keepEveryInvariant) {
  const unsigned seed = randomSeed();
  const unsigned rounds = randomRounds();
  Tally tally;
  for (unsigned number = 0; number < rounds && !testing::Test::HasFailure(); ++number) {
    SCOPED_TRACE("QUILLERY_SEED=" + std::to_string(seed) + ", course " + std::to_string(number));
    Course(seed, number, tally).run();
  }
  for (const auto& [what, count] : tally) std::printf("%6d  %s\n", count, what.c_str());
  for (const char* what :
       {"alert: Safari is open", "alert: Safari did not close", "alert: Choose a day", "alert: Bookmarks sorted",
        "alert: Already sorted", "alert: Safari is still open", "alert: Bookmarks could not be sorted",
        "the file was written", "Safari was asked to quit", "an update waited for a sort", "the program was relaunched",
        "ended running", "ended stopped", "ended without access"})
    EXPECT_GE(tally[what], static_cast<int>(rounds / 200)) << what << ": too rare to prove anything";
}

}  // namespace
