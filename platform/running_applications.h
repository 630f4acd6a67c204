// The running applications.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

// One process of an application.
class RunningApplication {
 public:
  virtual ~RunningApplication() = default;

  virtual int processIdentifier() const = 0;

  // Absent if the process has no bundle identifier.
  virtual std::optional<std::string> bundleIdentifier() const = 0;

  // Requests a normal quit, the same as the Quit command of the application's own menu, and does not wait for it. The
  // application may ask its user about unsaved work and keep running; it is never forced to quit. Returns true if the
  // request was delivered.
  virtual bool terminate() = 0;
};

class RunningApplications {
 public:
  virtual ~RunningApplications() = default;

  // Returns every running instance of the application with this bundle identifier. Throws Error if that is unknown,
  // because the part of the system that knows it exists but does not reply.
  virtual std::vector<std::shared_ptr<RunningApplication>> withBundleIdentifier(const std::string& identifier) = 0;

  // Returns false if no part of this system knows which applications run, such as outside a login session. Then
  // withBundleIdentifier returns none. Throws Error as withBundleIdentifier does.
  virtual bool areKnown() = 0;
};
