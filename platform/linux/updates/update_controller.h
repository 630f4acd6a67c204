// The updater of the program on Linux: it looks for updates, shows them, and installs the one that the user wants.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "platform/linux/updates/check_schedule.h"
#include "platform/linux/updates/feed_check.h"
#include "platform/linux/updates/package_download.h"
#include "platform/linux/updates/update_tools.h"
#include "platform/updater.h"

// Calls its delegate as Sparkle does. A session starts with a check, and ends when there is nothing more to do or to
// show. Between sessions, a check is scheduled.
class UpdateController : public UpdaterController, public std::enable_shared_from_this<UpdateController> {
 public:
  // Keeps only a weak reference to the delegate.
  UpdateController(UpdateTools tools, std::weak_ptr<UpdaterDelegate> delegate);
  ~UpdateController() override;

  // Schedules the next check; none without consent.
  void scheduleCheck();

  bool automaticallyChecksForUpdates() const override { return schedule_.isAllowed(); }

  // Switching off also cancels a scheduled check in progress.
  void setAutomaticallyChecksForUpdates(bool checks) override;

  // Returns false during a check, a download or an installation. Otherwise a check brings the open window to the front
  // if there is one.
  bool canCheckForUpdates() const override;
  Observation observeCanCheckForUpdates(std::function<void()> handler) override;

  // Shows the update that a scheduled check has found, or starts a check.
  void checkForUpdates() override;

 private:
  enum class Stage {
    idle,
    checking,
    reminding,   // the delegate announces the update
    found,       // the window of the update is open
    message,     // another window is open
    installing,  // or downloading
    relaunching
  };

  void setStage(Stage stage);
  void check(bool isUserInitiated);
  void handle(const CheckOutcome& outcome);
  void handleFailure(const std::string& reason);
  void handleNothing(const UpdateChoice& choice);
  void announce(const AppcastItem& item);
  void showFound();
  void attend();
  void answer(UpdateAnswer answer);
  void skip();
  void download();
  void install();
  void handleInstallation(Installation installation, const std::string& reason);
  void prepareRelaunch();
  void relaunch();
  void showMessage(const std::string& heading, const std::string& text);
  void showProgress(const std::string& text);
  void dropWork();
  void endSession();

  UpdateTools tools_;
  std::weak_ptr<UpdaterDelegate> delegate_;
  CheckSchedule schedule_;
  std::vector<std::weak_ptr<std::function<void()>>> observers_;

  // Of the session.
  Stage stage_ = Stage::idle;
  bool isUserInitiated_ = false;
  bool hasAttention_ = false;
  AppcastItem item_;
  std::unique_ptr<FeedCheck> check_;
  std::unique_ptr<PackageDownload> download_;
  PackageRequest installation_;
};

// Makes the controller.
class LinuxUpdater : public Updater {
 public:
  explicit LinuxUpdater(UpdateTools tools) : tools_(std::move(tools)) {}

  std::shared_ptr<UpdaterController> start(const std::weak_ptr<UpdaterDelegate>& delegate) override;

 private:
  UpdateTools tools_;
};
