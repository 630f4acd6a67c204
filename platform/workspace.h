// The user's session: the installed applications, the file manager and system-wide events.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "platform/running_applications.h"

// Ends the observation when the last reference is released.
using Observation = std::shared_ptr<void>;

// Called with the application that terminated; null if the system does not identify it.
using TerminationHandler = std::function<void(const std::shared_ptr<RunningApplication>& application)>;

class Workspace {
 public:
  virtual ~Workspace() = default;

  // Returns the location of the installed application with this bundle identifier, a path for openApplication; absent
  // if it is not installed.
  virtual std::optional<std::string> locateApplication(const std::string& bundleIdentifier) = 0;

  // The next four functions do not wait for their effect, and do not report failures.

  // Starts the application at this location, or brings it to the front.
  virtual void openApplication(const std::string& location) = 0;

  // Opens an address (a URL) in the user's program for it.
  virtual void openAddress(const std::string& address) = 0;

  // Opens a folder in the file manager or, if it does not exist, the nearest folder above it that does.
  virtual void openFolder(const std::string& path) = 0;

  // Shows the folder that contains a file or folder in the file manager, and selects the file or folder there.
  virtual void revealFile(const std::string& path) = 0;

  // Returns the address of the system's settings for the programs that may read the data of others; absent if the
  // system has none.
  virtual std::optional<std::string> fileAccessSettings() = 0;

  // Returns true if the user has switched off the login agent of this property list in the system's settings.
  virtual bool hasSwitchedOff(const std::string& agentFile) = 0;

  // Calls `handler` on the main thread each time any application has terminated. The handler must not throw.
  virtual Observation observeTerminations(TerminationHandler handler) = 0;

  // Calls `handler` on the main thread each time the machine has woken from sleep. The handler must not throw.
  virtual Observation observeWake(std::function<void()> handler) = 0;
};
