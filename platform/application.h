// This process as an application: its loop, its end, and what its user asks of it from outside.
#pragma once

#include <memory>

// Told of what happens to the application as a whole, on the main thread.
class ApplicationDelegate {
 public:
  virtual ~ApplicationDelegate() = default;

  // The loop is about to run. The first thing that it is told, once.
  virtual void applicationDidFinishLaunching() = 0;

  // The application is to end; answers whether it may.
  virtual bool applicationShouldTerminate() = 0;

  // The user opened the application though it runs; answers whether the platform may do what it usually does then.
  virtual bool applicationShouldHandleReopen(bool hasVisibleWindows) = 0;
};

class Application {
 public:
  virtual ~Application() = default;

  // Held weakly.
  virtual void setDelegate(const std::weak_ptr<ApplicationDelegate>& delegate) = 0;

  // Runs the main loop until the application terminates.
  virtual void run() = 0;

  // Asks the delegate and, unless it refuses, ends the loop, dialogs and all.
  virtual void terminate() = 0;
};
