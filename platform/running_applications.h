// The applications that are running.
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

  // Absent for a process without one.
  virtual std::optional<std::string> bundleIdentifier() const = 0;

  // Asks it to quit normally, as its own menu would, and does not wait for that: it may ask its user about unsaved
  // work, and stay. Answers whether the request was delivered. There is no way to force it.
  virtual bool terminate() = 0;
};

class RunningApplications {
 public:
  virtual ~RunningApplications() = default;

  // Every running instance of the application with this bundle identifier; none if it is not running.
  virtual std::vector<std::shared_ptr<RunningApplication>> withBundleIdentifier(const std::string& identifier) = 0;
};
