// The applications that are running.
#pragma once

#include <memory>
#include <string>
#include <vector>

class RunningApplication {
 public:
  virtual ~RunningApplication() = default;
  virtual int processIdentifier() const = 0;
};

class RunningApplications {
 public:
  virtual ~RunningApplications() = default;

  // Every running instance of the application with this bundle identifier; none if it is not running.
  virtual std::vector<std::shared_ptr<RunningApplication>> withBundleIdentifier(const std::string& identifier) = 0;
};
