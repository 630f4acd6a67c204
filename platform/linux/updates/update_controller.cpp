#include "platform/linux/updates/update_controller.h"

#include <iostream>
#include <utility>

#include "platform/product.h"
#include "values/harmless_text.h"
#include "values/log_line.h"
#include "values/plist_text.h"
#include "values/plist_value.h"

namespace {

constexpr const char* skippedKey = "SUSkippedVersion";

const std::string& programName() {
  static const std::string name(product::name);
  return name;
}

// A version for a text in a window: on one line and not endless.
std::string shown(const std::string& version) {
  constexpr std::size_t longest = 60;
  return harmlessLine(version.size() > longest ? version.substr(0, longest) + "…" : version);
}

std::optional<std::string> text(const std::optional<PlistValue>& value) {
  const std::optional<PlistText> text = value ? value->string() : std::nullopt;
  return text ? std::optional(utf8(text->utf16())) : std::nullopt;
}

}  // namespace

UpdateController::UpdateController(UpdateTools tools, std::weak_ptr<UpdaterDelegate> delegate)
    : tools_(std::move(tools)), delegate_(std::move(delegate)), schedule_(tools_.loop, tools_.userDefaults) {}

UpdateController::~UpdateController() {
  if (stage_ != Stage::idle) tools_.windows.close();
}

void UpdateController::setAutomaticallyChecksForUpdates(bool checks) {
  schedule_.setAllowed(checks);
  if (stage_ == Stage::idle) return scheduleCheck();
  if (stage_ == Stage::checking && !isUserInitiated_ && !checks) endSession();
}

bool UpdateController::canCheckForUpdates() const {
  return stage_ == Stage::idle || stage_ == Stage::reminding || stage_ == Stage::found || stage_ == Stage::message;
}

Observation UpdateController::observeCanCheckForUpdates(std::function<void()> handler) {
  auto observer = std::make_shared<std::function<void()>>(std::move(handler));
  observers_.push_back(observer);
  (*observer)();
  return observer;
}

void UpdateController::setStage(Stage stage) {
  const bool couldCheck = canCheckForUpdates();
  stage_ = stage;
  if (canCheckForUpdates() == couldCheck) return;
  std::erase_if(observers_, [](const auto& observer) { return observer.expired(); });
  const auto observers = observers_;  // a handler may add another
  for (const auto& observer : observers)
    if (const auto present = observer.lock()) (*present)();
}

void UpdateController::checkForUpdates() {
  if (stage_ == Stage::idle) return check(true);
  if (stage_ == Stage::reminding) return showFound();
  if (!canCheckForUpdates()) return;
  tools_.windows.bringToFront();
  attend();
}

void UpdateController::scheduleCheck() {
  schedule_.start([weak = weak_from_this()] {
    if (const auto self = weak.lock()) self->check(false);
  });
}

void UpdateController::check(bool isUserInitiated) {
  schedule_.stop();
  schedule_.noteCheck();
  isUserInitiated_ = isUserInitiated;
  hasAttention_ = false;
  if (isUserInitiated) showProgress("Looking for updates…");
  setStage(Stage::checking);
  const auto skipped = isUserInitiated ? std::nullopt : text(tools_.userDefaults.object(skippedKey));
  check_ = std::make_unique<FeedCheck>(tools_, skipped, [this](const CheckOutcome& outcome) { handle(outcome); });
}

void UpdateController::handle(const CheckOutcome& outcome) {
  if (outcome.failure) return handleFailure(*outcome.failure);
  if (outcome.choice.item) return announce(*outcome.choice.item);
  if (!isUserInitiated_) return endSession();
  if (!outcome.isKeptByRepository) return handleNothing(outcome.choice);
  showMessage("Your system keeps " + programName() + " up to date",
              programName() +
                  " comes from a package repository of your system, so new versions arrive with the system’s "
                  "other updates.");
}

void UpdateController::handleFailure(const std::string& reason) {
  if (isUserInitiated_) return showMessage("Looking for updates failed", reason);
  logLine(std::cerr, "quillery: looking for updates failed: " + reason);
  endSession();
}

void UpdateController::handleNothing(const UpdateChoice& choice) {
  if (!choice.unsuitable)
    return showMessage("You’re up to date", programName() + " " + tools_.ownVersion + " is the newest version.");
  const std::string& minimum = choice.unsuitable->minimumSystem;
  showMessage("There is no update for this system",
              programName() + " " + shown(choice.unsuitable->shownVersion) + " needs Debian" +
                  (minimum.empty() ? "" : " " + shown(minimum) + " or newer") + ".");
}

// Shows an update that was found, or lets the delegate announce it.
void UpdateController::announce(const AppcastItem& item) {
  item_ = item;
  const auto delegate = delegate_.lock();
  const bool isGentle = !isUserInitiated_ && delegate && delegate->supportsGentleScheduledUpdateReminders() &&
                        !delegate->standardUserDriverShouldHandleShowingScheduledUpdate(false);
  if (delegate) delegate->standardUserDriverWillHandleShowingUpdate(isUserInitiated_);
  check_ = nullptr;
  if (isGentle) return setStage(Stage::reminding);
  showFound();
}

void UpdateController::showFound() {
  const UpdateNews news{
      .heading = "A new version of " + programName() + " is available",
      .text = programName() + " " + shown(item_.shownVersion) + " is available; you have " + tools_.ownVersion + ".",
      .notes = item_.notes};
  tools_.windows.showFound(news, [weak = weak_from_this()](UpdateAnswer answer) {
    if (const auto self = weak.lock()) self->answer(answer);
  });
  setStage(Stage::found);
  attend();
}

// Tells the delegate once that the user has seen the update.
void UpdateController::attend() {
  if (stage_ != Stage::found || std::exchange(hasAttention_, true)) return;
  if (const auto delegate = delegate_.lock()) delegate->standardUserDriverDidReceiveUserAttention();
}

void UpdateController::answer(UpdateAnswer answer) {
  if (answer == UpdateAnswer::install) return download();
  if (answer == UpdateAnswer::skip) tools_.userDefaults.set(skippedKey, utf16(item_.version));
  endSession();
}

void UpdateController::download() {
  showProgress("Downloading " + programName() + " " + shown(item_.shownVersion) + "…");
  setStage(Stage::installing);
  download_ = std::make_unique<PackageDownload>(
      tools_, item_,
      PackageDownload::Handlers{
          .advanced = [this](std::uint64_t bytes) { tools_.windows.setProgress(bytes, item_.length); },
          .finished =
              [this](const std::optional<std::string>& failure) {
                if (!failure) return install();
                showMessage("The update failed", *failure);
              }});
  download_->start();
}

void UpdateController::install() {
  if (!download_->file().isUnchanged())
    return showMessage("The update failed", "The update was not installed: its file was changed.");
  showProgress("Installing " + programName() + " " + shown(item_.shownVersion) + "…");
  tools_.windows.disableCancel();
  installation_ = tools_.packages.install(
      download_->file().path(),
      [this](Installation installation, const std::string& reason) { handleInstallation(installation, reason); });
}

void UpdateController::handleInstallation(Installation installation, const std::string& reason) {
  switch (installation) {
    case Installation::done: return prepareRelaunch();
    case Installation::cancelled: return endSession();
    case Installation::failed: return showMessage("The update failed", "The update was not installed: " + reason);
    case Installation::left:
      download_->file().keep();
      return showMessage("The update is ready to be installed",
                         "This system has no way for " + programName() +
                             " to install it. Its package was verified; your file manager shows it. Open it there, and "
                             "start " +
                             programName() + " again afterwards.");
  }
}

void UpdateController::prepareRelaunch() {
  setStage(Stage::relaunching);
  download_ = nullptr;  // the relaunch destroys nothing
  const auto delegate = delegate_.lock();
  const bool isPostponed = delegate && delegate->shouldPostponeRelaunch([weak = weak_from_this()] {
    const auto self = weak.lock();
    if (self && self->stage_ == Stage::relaunching) self->relaunch();
  });
  if (!isPostponed) return relaunch();
  showProgress(programName() + " restarts as soon as it has finished sorting…");
  tools_.windows.disableCancel();
}

// The session does not end if the program does: nothing may start until the new one takes over.
void UpdateController::relaunch() {
  if (tools_.relaunch()) return tools_.windows.close();
  showMessage(programName() + " was updated", "The new version runs when you start " + programName() + " again.");
}

// The windows that end a session when they are closed.

void UpdateController::showMessage(const std::string& heading, const std::string& text) {
  tools_.windows.showMessage(heading, text, [weak = weak_from_this()] {
    if (const auto self = weak.lock()) self->endSession();
  });
  dropWork();
  setStage(Stage::message);
}

void UpdateController::showProgress(const std::string& text) {
  tools_.windows.showProgress(text, [weak = weak_from_this()] {
    if (const auto self = weak.lock()) self->endSession();
  });
}

void UpdateController::dropWork() {
  check_ = nullptr;
  download_ = nullptr;
  installation_ = nullptr;
}

void UpdateController::endSession() {
  dropWork();
  tools_.windows.close();
  setStage(Stage::idle);
  if (const auto delegate = delegate_.lock()) delegate->standardUserDriverWillFinishUpdateSession();
  if (stage_ == Stage::idle) scheduleCheck();
}

std::shared_ptr<UpdaterController> LinuxUpdater::start(const std::weak_ptr<UpdaterDelegate>& delegate) {
  auto controller = std::make_shared<UpdateController>(tools_, delegate);
  controller->scheduleCheck();
  return controller;
}
