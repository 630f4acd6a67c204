// Sessions of the updater: what its delegate and its user see.
#include "platform/linux/updates/update_controller.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <cmath>
#include <string>
#include <vector>

#include "tests/platform/linux/updates/update_test.h"

namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

class UpdateSchedule : public UpdateTest {
 protected:
  std::size_t checks() const { return network_.requests.size(); }
};

TEST_F(UpdateSchedule, asksNoServerWithoutConsent) {
  start();
  EXPECT_FALSE(controller_->automaticallyChecksForUpdates());
  loop_.advance(240h);
  EXPECT_EQ(checks(), 0);
  EXPECT_EQ(loop_.armedTimers(), 0);
  EXPECT_THAT(calls(), IsEmpty());
}

TEST_F(UpdateSchedule, takesOnlyABooleanForConsent) {
  defaults_.put("SUEnableAutomaticChecks", u"YES");
  start();
  EXPECT_FALSE(controller_->automaticallyChecksForUpdates());
  EXPECT_EQ(loop_.armedTimers(), 0);
}

TEST_F(UpdateSchedule, storesTheConsent) {
  start();
  controller_->setAutomaticallyChecksForUpdates(true);
  EXPECT_TRUE(controller_->automaticallyChecksForUpdates());
  start();
  EXPECT_TRUE(controller_->automaticallyChecksForUpdates());
  controller_->setAutomaticallyChecksForUpdates(false);
  EXPECT_FALSE(controller_->automaticallyChecksForUpdates());
  EXPECT_EQ(loop_.armedTimers(), 0);
}

TEST_F(UpdateSchedule, checksAtTheConsentAndThenOnceADay) {
  version_ = "0.1.0";
  publish();
  start();
  controller_->setAutomaticallyChecksForUpdates(true);
  loop_.run();
  EXPECT_EQ(checks(), 1);
  loop_.advance(24h - 1s);
  EXPECT_EQ(checks(), 1);
  loop_.advance(1s);
  EXPECT_EQ(checks(), 2);
  controller_->setAutomaticallyChecksForUpdates(false);
  loop_.advance(240h);
  EXPECT_EQ(checks(), 2);
}

TEST_F(UpdateSchedule, countsADayFromTheLastCheckOfAnyRun) {
  version_ = "0.1.0";
  publish();
  check();
  windows_.press();
  allowChecks();
  loop_.advance(20h);
  start();
  loop_.advance(4h - 1s);
  EXPECT_EQ(checks(), 1);
  loop_.advance(1s);
  EXPECT_EQ(checks(), 2);
}

TEST_F(UpdateSchedule, checksAtOnceIfTheLastCheckIsInTheFuture) {
  allowChecks();
  defaults_.put("SULastCheckTime", PlistDate{900'000'000});  // in 2029
  start();
  loop_.run();
  EXPECT_EQ(checks(), 1);
}

TEST_F(UpdateSchedule, checksAtOnceIfTheLastCheckIsNoDate) {
  allowChecks();
  for (const PlistValue& value : {PlistValue(u"yesterday"), PlistValue(PlistDate{std::nan("")})}) {
    network_.requests.clear();
    defaults_.put("SULastCheckTime", value);
    start();
    loop_.run();
    EXPECT_EQ(checks(), 1);
  }
}

TEST_F(UpdateSchedule, endsACheckWhenTheConsentIsWithdrawn) {
  network_.replies[feedAddress_].isSilent = true;
  allowChecks();
  start();
  loop_.run();
  EXPECT_FALSE(controller_->canCheckForUpdates());
  EXPECT_EQ(network_.transfers, 1);
  controller_->setAutomaticallyChecksForUpdates(false);
  EXPECT_TRUE(controller_->canCheckForUpdates());
  EXPECT_EQ(network_.transfers, 0);
  EXPECT_THAT(calls(), ElementsAre("finish"));
}

TEST_F(UpdateSchedule, checksTheNextDayAfterAFailureWithoutAWindow) {
  network_.replies.clear();
  allowChecks();
  start();
  testing::internal::CaptureStderr();
  loop_.run();
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "quillery: looking for updates failed: There is nothing.\n");
  EXPECT_EQ(windows_.open, "");
  EXPECT_THAT(calls(), ElementsAre("finish"));
  publish();
  loop_.advance(24h);
  EXPECT_EQ(checks(), 2);
  EXPECT_THAT(calls(), ElementsAre("should show", "will show scheduled"));
}

class UpdateReminder : public UpdateTest {
 protected:
  UpdateReminder() {
    allowChecks();
    start();
  }
};

TEST_F(UpdateReminder, leavesTheNewsToTheProgram) {
  loop_.run();
  EXPECT_THAT(calls(), ElementsAre("should show", "will show scheduled"));
  EXPECT_EQ(windows_.open, "");
  EXPECT_TRUE(controller_->canCheckForUpdates());
  EXPECT_THAT(network_.requests, ElementsAre(feedAddress_)) << "nothing is downloaded";
}

TEST_F(UpdateReminder, opensTheWindowAtTheMenuItem) {
  loop_.run();
  calls();
  check();
  EXPECT_EQ(windows_.open, "found");
  EXPECT_THAT(calls(), ElementsAre("attention"));
  EXPECT_THAT(network_.requests, ElementsAre(feedAddress_)) << "no second check";
  windows_.answer(UpdateAnswer::remindLater);
  EXPECT_THAT(calls(), ElementsAre("finish"));
  loop_.advance(24h);
  EXPECT_THAT(calls(), ElementsAre("should show", "will show scheduled")) << "reminds a day later";
}

TEST_F(UpdateReminder, opensTheWindowAtOnceIfTheProgramWants) {
  delegate_->letsUpdaterShow = true;
  loop_.run();
  EXPECT_THAT(calls(), ElementsAre("should show", "will show scheduled", "attention"));
  EXPECT_EQ(windows_.open, "found");
}

TEST_F(UpdateReminder, opensTheWindowForAProgramWithoutReminders) {
  delegate_->supportsReminders = false;
  loop_.run();
  EXPECT_THAT(calls(), ElementsAre("will show scheduled", "attention"));
  EXPECT_EQ(windows_.open, "found");
}

TEST_F(UpdateReminder, doesNotNameASkippedVersion) {
  loop_.run();
  check();
  windows_.answer(UpdateAnswer::skip);
  EXPECT_THAT(calls(), ElementsAre("should show", "will show scheduled", "attention", "finish"));
  loop_.advance(24h);
  EXPECT_THAT(calls(), ElementsAre("finish"));
  check();
  EXPECT_EQ(windows_.open, "found") << "but a requested check does";
  windows_.answer(UpdateAnswer::remindLater);
  calls();
  version_ = "0.3";
  publish();
  loop_.advance(24h);
  EXPECT_THAT(calls(), ElementsAre("should show", "will show scheduled"));
}

TEST_F(UpdateReminder, isNotShownWithoutADelegate) {
  delegate_ = nullptr;
  loop_.run();
  EXPECT_EQ(windows_.open, "found") << "the updater's own way";
}

class RequestedCheck : public UpdateTest {};

TEST_F(RequestedCheck, showsWhatItFinds) {
  check();
  EXPECT_EQ(windows_.open, "found");
  EXPECT_EQ(windows_.heading, "A new version of Quillery is available");
  EXPECT_EQ(windows_.text, "Quillery 0.2.0 is available; you have 0.1.0.");
  EXPECT_EQ(windows_.notes, "- Sorts faster.");
  EXPECT_THAT(calls(), ElementsAre("will show requested", "attention"));
}

TEST_F(RequestedCheck, showsNotesAsTheyAre) {
  notes_ = "&lt;img src=x onerror=y&gt;\n<![CDATA[<b>bold</b>]]> end";
  version_ = "0.2\n0 &lt;b&gt;";
  publish();
  check();
  EXPECT_EQ(windows_.notes, "<img src=x onerror=y>\n<b>bold</b> end");
  EXPECT_EQ(windows_.text, "Quillery 0.2\\u{0A}0 <b> is available; you have 0.1.0.");
}

TEST_F(RequestedCheck, showsThatItLooks) {
  start();
  controller_->checkForUpdates();
  EXPECT_EQ(windows_.open, "progress");
  EXPECT_EQ(windows_.text, "Looking for updates…");
  EXPECT_TRUE(windows_.canCancel);
  EXPECT_FALSE(controller_->canCheckForUpdates());
  controller_->checkForUpdates();
  loop_.run();
  EXPECT_EQ(network_.requests.size(), 1);
}

TEST_F(RequestedCheck, canBeCancelled) {
  network_.replies[feedAddress_].isSilent = true;
  check();
  windows_.press();
  EXPECT_EQ(windows_.open, "");
  EXPECT_EQ(network_.transfers, 0);
  EXPECT_TRUE(controller_->canCheckForUpdates());
  EXPECT_THAT(calls(), ElementsAre("finish"));
}

TEST_F(RequestedCheck, saysThatThereIsNothingNewer) {
  version_ = "0.1";
  publish();
  check();
  EXPECT_EQ(windows_.heading, "You’re up to date");
  EXPECT_EQ(windows_.text, "Quillery 0.1.0 is the newest version.");
  EXPECT_THAT(calls(), IsEmpty());
  windows_.press();
  EXPECT_EQ(windows_.open, "");
  EXPECT_THAT(calls(), ElementsAre("finish"));
}

TEST_F(RequestedCheck, saysWhatSystemTheUpdateNeeds) {
  std::string& feed = network_.replies[feedAddress_].body;
  feed.replace(feed.find(">12<"), 4, ">13<");
  check();
  EXPECT_EQ(windows_.text, "Quillery 0.2.0 needs Debian 13 or newer.");
}

TEST_F(RequestedCheck, saysWhatFailed) {
  network_.replies[feedAddress_] = {.body = "<rss", .failure = "The server has gone."};
  check();
  EXPECT_EQ(windows_.open, "message");
  EXPECT_EQ(windows_.heading, "Looking for updates failed");
  EXPECT_EQ(windows_.text, "The server has gone.");
  windows_.press();
  network_.replies[feedAddress_] = {.body = "<html/>"};
  check();
  EXPECT_EQ(windows_.text, "The list of updates couldn’t be read: it is not an appcast.");
}

TEST_F(RequestedCheck, leavesUpdatesToARepository) {
  packages_.own.hasRepository = true;
  check();
  EXPECT_EQ(windows_.heading, "Your system keeps Quillery up to date");
  EXPECT_THAT(network_.requests, IsEmpty());
  windows_.press();
  allowChecks();
  start();
  loop_.advance(48h);
  EXPECT_THAT(network_.requests, IsEmpty());
  EXPECT_EQ(windows_.open, "");
}

TEST_F(RequestedCheck, bringsAnOpenWindowToTheFront) {
  check();
  calls();
  check();
  EXPECT_EQ(windows_.timesInFront, 1);
  EXPECT_THAT(calls(), IsEmpty());
  windows_.answer(UpdateAnswer::remindLater);
  network_.replies.clear();
  check();
  EXPECT_EQ(windows_.open, "message");
  check();
  EXPECT_EQ(windows_.timesInFront, 2);
}

TEST_F(RequestedCheck, isReportedToTheObserver) {
  start();
  std::vector<bool> values;
  Observation observation =
      controller_->observeCanCheckForUpdates([&] { values.push_back(controller_->canCheckForUpdates()); });
  check();
  EXPECT_THAT(values, ElementsAre(true, false, true));
  windows_.answer(UpdateAnswer::install);
  EXPECT_THAT(values, ElementsAre(true, false, true, false)) << "the program ends for its new version";
  observation = nullptr;
}

TEST_F(RequestedCheck, isNotReportedAfterTheObservation) {
  start();
  int calls = 0;
  controller_->observeCanCheckForUpdates([&] { ++calls; });
  check();
  EXPECT_EQ(calls, 1);
}

TEST_F(RequestedCheck, endsWithTheController) {
  network_.replies[feedAddress_].isSilent = true;
  check();
  controller_ = nullptr;
  EXPECT_EQ(windows_.open, "");
  EXPECT_EQ(network_.transfers, 0);
}

class UpdateInstallationTest : public UpdateTest {};

TEST_F(UpdateInstallationTest, downloadsVerifiesInstallsAndRelaunches) {
  check();
  calls();
  windows_.answer(UpdateAnswer::install);
  EXPECT_THAT(network_.requests, ElementsAre(feedAddress_, packageAddress_));
  EXPECT_THAT(packages_.installed, ElementsAre("the package"));
  EXPECT_THAT(calls(), ElementsAre("relaunch?"));
  EXPECT_EQ(relaunches_, 1);
  EXPECT_FALSE(controller_->canCheckForUpdates()) << "nothing starts before the program ends";
  EXPECT_EQ(downloads(), 0);
}

TEST_F(UpdateInstallationTest, showsHowFarTheDownloadIs) {
  package_ = std::string(1500, 'x');
  publish();
  network_.replies[packageAddress_].isSilent = true;
  install();
  EXPECT_EQ(windows_.text, "Downloading Quillery 0.2.0…");
  EXPECT_TRUE(windows_.canCancel);
  windows_.press();
  network_.replies[packageAddress_] = {.body = package_};
  network_.replies[packageAddress_].body.pop_back();
  network_.replies[packageAddress_].failure = "The connection broke.";
  install();
  EXPECT_EQ(windows_.text, "The connection broke.");
}

TEST_F(UpdateInstallationTest, canBeCancelledWhileItDownloads) {
  network_.replies[packageAddress_].isSilent = true;
  install();
  EXPECT_EQ(downloads(), 1);
  calls();
  windows_.press();
  EXPECT_EQ(windows_.open, "");
  EXPECT_EQ(network_.transfers, 0);
  EXPECT_EQ(downloads(), 0);
  EXPECT_TRUE(controller_->canCheckForUpdates());
  EXPECT_THAT(calls(), ElementsAre("finish"));
}

TEST_F(UpdateInstallationTest, cannotBeCancelledWhileItInstalls) {
  packages_.beforeInstalling = [this] { EXPECT_TRUE(windows_.canCancel); };
  check();
  delegate_->postpones = true;
  windows_.answer(UpdateAnswer::install);
  EXPECT_EQ(windows_.open, "progress");
  EXPECT_FALSE(windows_.canCancel);
}

TEST_F(UpdateInstallationTest, relaunchesWhenTheDelegateAllowsIt) {
  delegate_->postpones = true;
  install();
  EXPECT_EQ(relaunches_, 0);
  EXPECT_EQ(windows_.text, "Quillery restarts as soon as it has finished sorting…");
  loop_.advance(48h);
  EXPECT_EQ(relaunches_, 0);
  delegate_->postponed();
  EXPECT_EQ(relaunches_, 1);
  EXPECT_EQ(windows_.open, "");
}

TEST_F(UpdateInstallationTest, endsIfTheProgramCannotEnd) {
  canRelaunch_ = false;
  install();
  EXPECT_EQ(windows_.heading, "Quillery was updated");
  calls();
  windows_.press();
  EXPECT_THAT(calls(), ElementsAre("finish"));
  EXPECT_TRUE(controller_->canCheckForUpdates());
}

TEST_F(UpdateInstallationTest, endsQuietlyWithoutPermission) {
  packages_.installation = Installation::cancelled;
  install();
  EXPECT_EQ(windows_.open, "");
  EXPECT_EQ(relaunches_, 0);
  EXPECT_EQ(downloads(), 0);
  EXPECT_EQ(calls().back(), "finish");
}

TEST_F(UpdateInstallationTest, saysWhyItFailed) {
  packages_.installation = Installation::failed;
  packages_.reason = "dpkg was interrupted.";
  install();
  EXPECT_EQ(windows_.heading, "The update failed");
  EXPECT_EQ(windows_.text, "The update was not installed: dpkg was interrupted.");
  EXPECT_EQ(relaunches_, 0);
  EXPECT_EQ(downloads(), 0);
}

TEST_F(UpdateInstallationTest, leavesTheFileIfThereIsNoInstaller) {
  packages_.installation = Installation::left;
  install();
  EXPECT_EQ(windows_.heading, "The update is ready to be installed");
  windows_.press();
  EXPECT_EQ(contentOf(packages_.installedPath), "the package");
  EXPECT_EQ(modeOf(packages_.installedPath), 0400U);
  packages_.installation = Installation::cancelled;
  install();
  EXPECT_EQ(downloads(), 0) << "until the next download";
}

}  // namespace
