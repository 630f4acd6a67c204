#include "tests/support/controller_model.h"

#include <chrono>
#include <utility>

#include "schedule/schedule_settings.h"

using namespace std::chrono_literals;

namespace {

bool isKnownToRun(const World& world) { return !world.safaris.empty() && !world.isSafariUnknown; }

}  // namespace

void ControllerModel::programIsLaunched(bool isPaused) {
  *this = {};
  enabled = !isPaused;
}

void ControllerModel::setUpRuns(const World& world) {
  accessWindow = AccessWindow::ofSetUp;
  if (world.isReadable) return grantAccess(world);
  acts.emplace_back("show access window");
}

void ControllerModel::grantAccess(const World& world) {
  const bool isSetUp = std::exchange(accessWindow, AccessWindow::closed) == AccessWindow::ofSetUp;
  if (!isSetUp) return;
  acts.emplace_back("register");
  if (world.isLoginSetUpBroken) {
    acts.emplace_back("alert Login setup failed");
  } else if (enabled) {
    schedule(world);
  }
}

void ControllerModel::userReopensProgram(const World& world) {
  const bool isOpen = accessWindow != AccessWindow::closed;
  if (world.isReadable) {
    if (!isOpen) return;
    acts.emplace_back("hide access window");
    grantAccess(world);
  } else {
    acts.emplace_back("show access window");
    if (!isOpen) accessWindow = AccessWindow::ofReopening;
  }
}

void ControllerModel::accessIsTriedAgain(const World& world) {
  if (!world.isReadable) return;
  acts.emplace_back("hide access window");
  grantAccess(world);
}

void ControllerModel::userCancelsAccess() {
  acts.emplace_back("hide access window");
  accessWindow = AccessWindow::closed;
  requireAccess();
}

void ControllerModel::requireAccess() {
  needsAccess = true;
  enabled = false;
  scheduled = std::nullopt;
}

void ControllerModel::schedule(const World& world) {
  scheduled = enabled ? nextScheduledSort(world.now) : std::nullopt;
}

void ControllerModel::userTogglesSorting(const World& world) {
  if (enabled) {
    enabled = false;
    scheduled = std::nullopt;
    acts.emplace_back("set sortingPaused true");
  } else if (world.isReadable) {
    enabled = true;
    needsAccess = false;
    acts.emplace_back("set sortingPaused false");
    schedule(world);
  } else {
    requireAccess();
  }
}

void ControllerModel::userSavesSchedule(bool isValid, std::optional<Instant> next) {
  isScheduleOpen = !isValid;
  if (!isValid) return acts.push_back("alert Choose a day");
  scheduled = enabled ? next : std::nullopt;
}

void ControllerModel::userQuitsProgram() {
  scheduled = std::nullopt;
  acts.emplace_back("terminate");
}

void ControllerModel::userChoosesSortNow(const World& world) {
  if (busy || updateInstallPending) return;
  if (!world.isReadable) return requireAccess();
  if (!isKnownToRun(world)) return sort(world, true);
  acts.emplace_back("alert Safari is open");
}

void ControllerModel::userClosesAlert(const World& world, const std::string& title, std::size_t button) {
  if (title == "Safari is open") {
    if (button == 0) closeSortReopen(world, false);
    if (button == 1) userChoosesSortNow(world);
  } else if (title == "Safari is still open") {
    if (button != 0) {
      busy = false;
    } else if (isKnownToRun(world)) {
      acts.emplace_back("alert Safari is still open");
    } else {
      sortFile(world, true);
    }
  } else if (title == "Login setup failed") {
    if (enabled) schedule(world);
  } else if (title != "Safari did not close" && title != "Choose a day") {
    busy = false;  // the report of a sort
  }
}

void ControllerModel::closeSortReopen(const World& world, bool isQuiet) {
  if (busy || updateInstallPending || !world.isReadable) return;
  if (!isKnownToRun(world)) return sort(world, false);
  busy = true;
  sequence = {{}, isQuiet, world.now + 45s};
  for (const World::Safari& instance : world.safaris) {
    acts.push_back("quit " + std::to_string(instance.process));
    sequence->asked.insert(instance.process);
    if (!instance.isRefusing) ownQuits.insert(instance.process);
  }
}

void ControllerModel::quitIsPolled(const World& world) {
  const bool isClosed = world.safaris.empty() && !world.isSafariUnknown;
  if (!isClosed && world.now < sequence->deadline) return;
  const Sequence ended = *std::exchange(sequence, std::nullopt);
  busy = false;
  // Whoever quits later does so because the user answered its question.
  if (!isClosed)
    for (const int process : ended.asked) ownQuits.erase(process);
  if (!isKnownToRun(world)) {
    sort(world, false);
    acts.emplace_back("open Safari");
  } else if (!ended.isQuiet) {
    acts.emplace_back("alert Safari did not close");
  }
}

void ControllerModel::sort(const World& world, bool isAttended) {
  if (world.fault != Fault::safariStartsBefore) return sortFile(world, isAttended);
  if (isAttended) report("Safari is still open", true);
}

void ControllerModel::sortFile(const World& world, bool isAttended) {
  if (!world.isReadable || world.isSafariUnknown) return report("Bookmarks could not be sorted", isAttended);
  acts.emplace_back("sort");
  if (world.isInOrder) {
    if (isAttended) report("Already sorted", true);
  } else if (world.fault == Fault::none || world.fault == Fault::safariStartsBefore) {
    acts.emplace_back("write");
    report("Bookmarks sorted", isAttended);
  } else {
    report("Bookmarks could not be sorted", isAttended);
  }
}

void ControllerModel::report(const std::string& title, bool isAttended) {
  acts.push_back((isAttended ? "alert " : "printed ") + title);
  busy = isAttended;
}

void ControllerModel::scheduledTimeComes(const World& world, Instant date) {
  if (enabled && world.now - date < 90s) closeSortReopen(world, true);
  schedule(world);
}

void ControllerModel::machineWakes(const World& world) { schedule(world); }

void ControllerModel::processTerminates(int process, bool sortsOnQuit) {
  const bool wasOwnQuit = ownQuits.erase(process) > 0;
  if (!wasOwnQuit && enabled && sortsOnQuit && !busy) acts.emplace_back("after 1000 ms");
}

void ControllerModel::delayAfterQuitPasses(const World& world, bool sortsOnQuit) {
  if (!sortsOnQuit || isKnownToRun(world) || !enabled || busy || updateInstallPending) return;
  if (!world.isReadable) return requireAccess();
  sort(world, false);
}

void ControllerModel::updateAsksToRelaunch() {
  updateInstallPending = true;
  isUpdateWaiting = busy;
}

void ControllerModel::updateIsPolled() {
  if (busy) return;
  isUpdateWaiting = false;
  acts.emplace_back("install");
}

void ControllerModel::updateSessionEnds() { updateInstallPending = isUpdateWaiting = false; }
