// The applications that are running, by AppKit.
#pragma once

#import <AppKit/AppKit.h>

#include "platform/macos/objective_c.h"
#include "platform/running_applications.h"

// NSRunningApplication, which asks the system's launch services.
class AppKitApplications : public RunningApplications {
 public:
  std::vector<std::shared_ptr<RunningApplication>> withBundleIdentifier(const std::string& identifier) override;
};

// One of them.
std::shared_ptr<RunningApplication> runningApplicationOf(NSRunningApplication* application);
