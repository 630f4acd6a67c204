// The application object and the updater of a virtual machine.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "platform/application.h"
#include "platform/updater.h"
#include "tests/support/journal.h"

// Records "run" and "terminate". run() launches the delegate, calls the test's handler and returns.
class VirtualApplication : public Application {
 public:
  explicit VirtualApplication(Journal& journal) : journal_(journal) {}

  void setDelegate(const std::weak_ptr<ApplicationDelegate>& newDelegate) override { delegate_ = newDelegate; }
  void run() override;
  void terminate() override;

  // Sets the handler that run() calls after the launch.
  void whileRunning(std::function<void()> handler) { whileRunning_ = std::move(handler); }
  // Opens the running application again, as its user would. Returns the delegate's answer.
  bool reopen(bool hasVisibleWindows);
  bool hasTerminated() const { return hasTerminated_; }

 private:
  Journal& journal_;
  std::weak_ptr<ApplicationDelegate> delegate_;
  std::function<void()> whileRunning_;
  bool hasTerminated_ = false;
};

// Records "start updater", "check for updates" and "check automatically" with "on" or "off".
class VirtualUpdater : public Updater, public UpdaterController {
 public:
  explicit VirtualUpdater(Journal& journal) : journal_(journal) {}

  std::shared_ptr<UpdaterController> start(const std::weak_ptr<UpdaterDelegate>& delegate) override;
  bool automaticallyChecksForUpdates() const override { return isAutomatic_; }
  void setAutomaticallyChecksForUpdates(bool checks) override;
  bool canCheckForUpdates() const override { return canCheck_; }
  Observation observeCanCheckForUpdates(std::function<void()> handler) override;
  void checkForUpdates() override;

  // Changes whether it can check, and calls the observers.
  void setCanCheck(bool canCheck);
  // Sets whether it checks automatically, and ignores later changes, like a managed setting.
  void fixAutomatic(bool isAutomatic) {
    isAutomatic_ = isAutomatic;
    isFixed_ = true;
  }
  const std::weak_ptr<UpdaterDelegate>& delegate() const { return delegate_; }

 private:
  Journal& journal_;
  std::weak_ptr<UpdaterDelegate> delegate_;
  std::vector<std::weak_ptr<std::function<void()>>> handlers_;
  bool isAutomatic_ = true;
  bool isFixed_ = false;
  bool canCheck_ = true;
};
