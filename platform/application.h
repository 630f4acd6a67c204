// The application object: its main loop, its termination, and requests that reach it from outside.
#pragma once

#include <memory>

// Receives the application's events. Every call comes on the main thread.
class ApplicationDelegate {
 public:
  virtual ~ApplicationDelegate() = default;

  // Called once, when the main loop starts, before every other event.
  virtual void applicationDidFinishLaunching() = 0;

  // Called before the application terminates. Returns true if it may terminate, false to keep it running.
  virtual bool applicationShouldTerminate() = 0;

  // Called when the user opens the application while it is running. `hasVisibleWindows` is true if at least one of its
  // windows is on the screen. Returns true if the platform may perform its default action, such as raising windows.
  virtual bool applicationShouldHandleReopen(bool hasVisibleWindows) = 0;
};

class Application {
 public:
  virtual ~Application() = default;

  // Keeps only a weak reference. Without a living delegate, events have the platform's default effect.
  virtual void setDelegate(const std::weak_ptr<ApplicationDelegate>& delegate) = 0;

  // Runs the main loop until the application terminates. On some platforms that ends the process, so this may not
  // return. If the application runs already and the system has not opened that instance instead, opens it and returns.
  virtual void run() = 0;

  // Asks the delegate. Unless it refuses, ends the main loop, including the nested loop of an open dialog.
  virtual void terminate() = 0;
};
