// The user's session around this program: the applications installed in it, and what happens in it.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "platform/running_applications.h"

// An observation lasts until its last reference is given up.
using Observation = std::shared_ptr<void>;

// Told of an application that has terminated; null where the notification names none.
using TerminationHandler = std::function<void(const std::shared_ptr<RunningApplication>& application)>;

class Workspace {
 public:
  virtual ~Workspace() = default;

  // Where the application with this bundle identifier is installed: a path for openApplication. Absent if it is not.
  virtual std::optional<std::string> locateApplication(const std::string& bundleIdentifier) = 0;

  // Asks for the application at this location to be started, or to be brought to the front, and does not wait for it.
  // Nothing tells of a failure.
  virtual void openApplication(const std::string& location) = 0;

  // Opens an address in the program that the user has for it, and a folder in the file manager. Nothing tells of a
  // failure.
  virtual void openAddress(const std::string& address) = 0;
  virtual void openFolder(const std::string& path) = 0;

  // Shows a file or folder in the file manager, selected. Nothing tells of a failure.
  virtual void revealFile(const std::string& path) = 0;

  // Calls `handler` on the main thread whenever an application, any one, has terminated.
  virtual Observation observeTerminations(TerminationHandler handler) = 0;

  // Calls `handler` on the main thread whenever the machine has woken from sleep.
  virtual Observation observeWake(std::function<void()> handler) = 0;
};
