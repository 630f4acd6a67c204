// The application object of AppKit.
#pragma once

#import <AppKit/AppKit.h>

#include <memory>

#include "platform/application.h"
#include "platform/macos/objective_c.h"

@class ApplicationForwarder;

// Uses the shared NSApplication. At most one instance may exist at a time.
class AppKitApplication : public Application {
 public:
  AppKitApplication();

  void setDelegate(const std::weak_ptr<ApplicationDelegate>& delegate) override;

  // AppKit ends the process when the application terminates, so this returns only if the loop cannot run.
  void run() override;

  // Returns only if the delegate refuses.
  void terminate() override;

 private:
  NSApplication* application_ = NSApplication.sharedApplication;
  ApplicationForwarder* forwarder_;  // AppKit keeps a weak reference
};
