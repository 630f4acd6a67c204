// The workspace of a virtual machine: the installed applications and the observers of its notifications.
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

// Records "locate" with the identifier, "open" with the location, "address", "folder" and "reveal" with their objects,
// "observe terminations" and "observe wake". Safari is installed, and an opened application runs at once. Notifications
// are delivered through the main loop.
class VirtualWorkspace : public Workspace {
 public:
  VirtualWorkspace(Journal& journal, VirtualMainLoop& loop, VirtualRunningApplications& applications);

  std::optional<std::string> locateApplication(const std::string& bundleIdentifier) override;
  void openApplication(const std::string& location) override;
  void openAddress(const std::string& address) override;
  void openFolder(const std::string& path) override;
  void revealFile(const std::string& path) override;
  std::optional<std::string> fileAccessSettings() override { return fileAccessSettings_; }
  bool hasSwitchedOff(const std::string& agentFile) override;
  Observation observeTerminations(TerminationHandler handler) override;
  Observation observeWake(std::function<void()> handler) override;

  // From now on, the system has no settings for the access to files.
  void removeFileAccessSettings() { fileAccessSettings_ = std::nullopt; }
  void uninstall(const std::string& identifier) { installed_.erase(identifier); }
  // Switches the login agent of this property list off, as its user may in the system's settings.
  void switchOff(const std::string& agentFile) { switchedOff_ = agentFile; }
  // From now on, opened applications do not start.
  void breakOpening() { opens_ = false; }
  // How applications that are opened from now on react to a quit request.
  void setBehavior(const QuitBehavior& behavior) { behavior_ = behavior; }

  // Delays the notifications of ended applications.
  void delayNotifications(VirtualMainLoop::Duration delay) { notificationDelay_ = delay; }
  VirtualMainLoop::Duration notificationDelay() const { return notificationDelay_; }
  // Notifies the observers that an application has ended; null is a notification without an application.
  void notifyTermination(const std::shared_ptr<RunningApplication>& application);
  // Notifies the observers of a wake, behind all work that is due or in front of it.
  void wake(VirtualMainLoop::Place place = VirtualMainLoop::Place::back);

 private:
  template <class Handler>
  using Handlers = std::vector<std::weak_ptr<Handler>>;

  Journal& journal_;
  VirtualMainLoop& loop_;
  VirtualRunningApplications& applications_;
  std::map<std::string, std::string> installed_ = {{"com.apple.Safari", "/Applications/Safari.app"}};
  std::optional<std::string> fileAccessSettings_ =
      "x-apple.systempreferences:com.apple.preference.security?Privacy_AllFiles";
  std::optional<std::string> switchedOff_;
  bool opens_ = true;
  QuitBehavior behavior_;
  VirtualMainLoop::Duration notificationDelay_ = VirtualMainLoop::Duration::zero();
  Handlers<TerminationHandler> terminationHandlers_;
  Handlers<std::function<void()>> wakeHandlers_;
};
