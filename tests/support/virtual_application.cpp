#include "tests/support/virtual_application.h"

void VirtualApplication::run() {
  journal_.perform("run", {}, [&] {
    if (const auto delegate = delegate_.lock()) delegate->applicationDidFinishLaunching();
    if (whileRunning_) whileRunning_();
  });
}

void VirtualApplication::terminate() {
  journal_.perform("terminate", {}, [&] {
    const auto delegate = delegate_.lock();
    hasTerminated_ = !delegate || delegate->applicationShouldTerminate();
  });
}

bool VirtualApplication::reopen(bool hasVisibleWindows) {
  const auto delegate = delegate_.lock();
  return delegate && delegate->applicationShouldHandleReopen(hasVisibleWindows);
}

std::shared_ptr<UpdaterController> VirtualUpdater::start(const std::weak_ptr<UpdaterDelegate>& delegate) {
  return journal_.perform("start updater", {}, [&] {
    delegate_ = delegate;
    return std::shared_ptr<UpdaterController>(std::shared_ptr<void>(), this);  // the machine owns it
  });
}

void VirtualUpdater::setAutomaticallyChecksForUpdates(bool checks) {
  journal_.perform("check automatically", checks ? "on" : "off", [&] {
    if (!isFixed_) isAutomatic_ = checks;
  });
}

Observation VirtualUpdater::observeCanCheckForUpdates(std::function<void()> handler) {
  const auto kept = std::make_shared<std::function<void()>>(std::move(handler));
  handlers_.emplace_back(kept);
  (*kept)();
  return kept;
}

void VirtualUpdater::checkForUpdates() {
  journal_.perform("check for updates", {}, [] {});
}

void VirtualUpdater::setCanCheck(bool canCheck) {
  canCheck_ = canCheck;
  const auto handlers = handlers_;
  for (const auto& handler : handlers)
    if (const auto wanted = handler.lock()) (*wanted)();
}
