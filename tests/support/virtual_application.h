// The program as an application of a virtual machine, and its updates.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "platform/application.h"
#include "platform/updater.h"
#include "tests/support/journal.h"

// Noted are "run" and "terminate". It runs as long as what the test prepared for that time.
class VirtualApplication : public Application {
 public:
  explicit VirtualApplication(Journal& journal) : journal_(journal) {}

  void setDelegate(const std::weak_ptr<ApplicationDelegate>& told) override { delegate_ = told; }
  void run() override;
  void terminate() override;

  // What happens while the loop runs, after launch.
  void whileRunning(std::function<void()> happening) { happening_ = std::move(happening); }
  // Its user opens it though it runs; answers what the delegate does.
  bool reopen(bool hasVisibleWindows);
  bool hasTerminated() const { return hasTerminated_; }

 private:
  Journal& journal_;
  std::weak_ptr<ApplicationDelegate> delegate_;
  std::function<void()> happening_;
  bool hasTerminated_ = false;
};

// Noted are "start updater", "check for updates" and "check automatically" with "on" or "off".
class VirtualUpdater : public Updater, public UpdaterController {
 public:
  explicit VirtualUpdater(Journal& journal) : journal_(journal) {}

  std::shared_ptr<UpdaterController> start(const std::weak_ptr<UpdaterDelegate>& delegate) override;
  bool automaticallyChecksForUpdates() const override { return isAutomatic_; }
  void setAutomaticallyChecksForUpdates(bool checks) override;
  bool canCheckForUpdates() const override { return canCheck_; }
  Observation observeCanCheckForUpdates(std::function<void()> handler) override;
  void checkForUpdates() override;

  // What a test does.
  void setCanCheck(bool canCheck);
  // One that takes no other value, as where the setting is managed.
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
