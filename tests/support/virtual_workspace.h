// The session on a virtual machine: which applications are installed, and who is told of what happens.
#pragma once

#include <chrono>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/workspace.h"
#include "tests/support/journal.h"
#include "tests/support/virtual_main_loop.h"
#include "tests/support/virtual_running_applications.h"

// Noted are "locate" with the identifier, "open" with the location, "address", "folder", "reveal",
// "observe terminations" and "observe wake". An application
// that is opened runs at once. Safari is installed. Ends of applications and wakes are told through the loop.
class VirtualWorkspace : public Workspace {
 public:
  VirtualWorkspace(Journal& journal, VirtualMainLoop& loop, VirtualRunningApplications& applications);

  std::optional<std::string> locateApplication(const std::string& bundleIdentifier) override;
  void openApplication(const std::string& location) override;
  void openAddress(const std::string& address) override;
  void openFolder(const std::string& path) override;
  void revealFile(const std::string& path) override;
  Observation observeTerminations(TerminationHandler handler) override;
  Observation observeWake(std::function<void()> handler) override;

  void uninstall(const std::string& identifier) { installed_.erase(identifier); }
  // From now on nothing starts that is opened.
  void breakOpening() { opens_ = false; }
  // What the applications do that it opens from now on, once they are asked to quit.
  void setBehavior(const QuitBehavior& behavior) { behavior_ = behavior; }

  // How long after an application's end its observers are told.
  void delayNotifications(VirtualMainLoop::Duration delay) { notificationDelay_ = delay; }
  // Tells of the end of an application; null for a notification that names none.
  void notifyTermination(const std::shared_ptr<RunningApplication>& application);
  // The machine has woken; its observers are told after all that is due, or before it.
  void wake(VirtualMainLoop::Place place = VirtualMainLoop::Place::back);

 private:
  template <class Handler>
  using Handlers = std::vector<std::weak_ptr<Handler>>;

  Journal& journal_;
  VirtualMainLoop& loop_;
  VirtualRunningApplications& applications_;
  std::map<std::string, std::string> installed_ = {{"com.apple.Safari", "/Applications/Safari.app"}};
  bool opens_ = true;
  QuitBehavior behavior_;
  VirtualMainLoop::Duration notificationDelay_ = VirtualMainLoop::Duration::zero();
  Handlers<TerminationHandler> terminationHandlers_;
  Handlers<std::function<void()>> wakeHandlers_;
};
