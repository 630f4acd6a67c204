// Updates of the program itself, through the platform's updater.
#pragma once

#include <functional>
#include <memory>

#include "platform/main_loop.h"
#include "platform/workspace.h"

// Receives the updater's questions and events. Every call comes on the main thread.
class UpdaterDelegate {
 public:
  virtual ~UpdaterDelegate() = default;

  // Returns true if the program itself announces, without a dialog, what a scheduled check found.
  virtual bool supportsGentleScheduledUpdateReminders() const = 0;

  // Asked for each update that a scheduled check has found. Returns true if the updater may open its window for it;
  // `inImmediateFocus` is true if the window would have the keyboard focus. Returns false if the program announces the
  // update. checkForUpdates() opens the window then.
  virtual bool standardUserDriverShouldHandleShowingScheduledUpdate(bool inImmediateFocus) = 0;

  // Called before the updater shows an update, or before the program has to announce it. `isUserInitiated` is true if
  // the user requested the check.
  virtual void standardUserDriverWillHandleShowingUpdate(bool isUserInitiated) = 0;

  // Called when the user has seen the update.
  virtual void standardUserDriverDidReceiveUserAttention() = 0;

  // Called at the end of the update session, whether an update was installed or not.
  virtual void standardUserDriverWillFinishUpdateSession() = 0;

  // Called before the updater relaunches the program. Returns true to postpone the relaunch until `install` is called,
  // false to relaunch now.
  virtual bool shouldPostponeRelaunch(Work install) = 0;
};

class UpdaterController {
 public:
  virtual ~UpdaterController() = default;

  virtual bool automaticallyChecksForUpdates() const = 0;
  virtual void setAutomaticallyChecksForUpdates(bool checks) = 0;

  virtual bool canCheckForUpdates() const = 0;
  // Calls `handler` at once, and again after each change of canCheckForUpdates.
  virtual Observation observeCanCheckForUpdates(std::function<void()> handler) = 0;

  // Starts a check that the user requested, and shows its result.
  virtual void checkForUpdates() = 0;
};

class Updater {
 public:
  virtual ~Updater() = default;

  // Creates and starts the controller. Keeps only a weak reference to the delegate. Throws Error if the updater cannot
  // be created.
  virtual std::shared_ptr<UpdaterController> start(const std::weak_ptr<UpdaterDelegate>& delegate) = 0;
};
