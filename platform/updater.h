// The program's own updates, as the platform's updater brings them.
#pragma once

#include <functional>
#include <memory>

#include "platform/main_loop.h"
#include "platform/workspace.h"

// What the updater asks and tells the program, on the main thread.
class UpdaterDelegate {
 public:
  virtual ~UpdaterDelegate() = default;

  // Whether the program announces by itself, gently, what a scheduled check has found.
  virtual bool supportsGentleScheduledUpdateReminders() const = 0;

  // An update is about to be shown, or to be announced where reminders are gentle.
  virtual void standardUserDriverWillHandleShowingUpdate(bool isUserInitiated) = 0;

  // The user has seen the update.
  virtual void standardUserDriverDidReceiveUserAttention() = 0;

  // The update session is over, whether or not something was installed.
  virtual void standardUserDriverWillFinishUpdateSession() = 0;

  // The program is to be relaunched for an update. True: it will be once `install` is called; false: now.
  virtual bool shouldPostponeRelaunch(Work install) = 0;
};

class UpdaterController {
 public:
  virtual ~UpdaterController() = default;

  virtual bool automaticallyChecksForUpdates() const = 0;
  virtual void setAutomaticallyChecksForUpdates(bool checks) = 0;

  virtual bool canCheckForUpdates() const = 0;
  // Calls `handler` at once and after each change.
  virtual Observation observeCanCheckForUpdates(std::function<void()> handler) = 0;

  // Checks because the user asked for it, and shows what comes of it.
  virtual void checkForUpdates() = 0;
};

class Updater {
 public:
  virtual ~Updater() = default;

  // Makes the controller of the program's updates and starts it. The delegate is held weakly.
  virtual std::shared_ptr<UpdaterController> start(const std::weak_ptr<UpdaterDelegate>& delegate) = 0;
};
