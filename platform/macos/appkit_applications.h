// The running applications, through AppKit.
#pragma once

#import <AppKit/AppKit.h>

#include "platform/macos/objective_c.h"
#include "platform/running_applications.h"

// Uses NSRunningApplication, which asks Launch Services, and the kernel's list of this user's processes if that finds
// none.
class AppKitApplications : public RunningApplications {
 public:
  // Never throws Error: AppKit reports no failures.
  std::vector<std::shared_ptr<RunningApplication>> withBundleIdentifier(const std::string& identifier) override;

  // Always true: AppKit does not report whether it sees the user's session.
  bool areKnown() override { return true; }
};

// Wraps an application of AppKit.
std::shared_ptr<RunningApplication> runningApplicationOf(NSRunningApplication* application);
