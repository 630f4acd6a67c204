// Counts of living objects, and turns of the main run loop.
#pragma once

#import <Foundation/Foundation.h>

#include <functional>

#include "platform/macos/objective_c.h"

// The number of living instances of a class, without its subclasses.
inline int instancesOf(NSString* name) { return GSDebugAllocationCount(NSClassFromString(name)); }

// Runs the loop until the condition holds, for a few seconds at most. Returns true if it holds.
inline bool runUntil(const std::function<bool()>& condition) {
  NSDate* const end = [NSDate dateWithTimeIntervalSinceNow:5];
  while (!condition()) {
    if (end.timeIntervalSinceNow < 0) return false;
    @autoreleasepool {
      [NSRunLoop.mainRunLoop runMode:NSDefaultRunLoopMode beforeDate:[NSDate dateWithTimeIntervalSinceNow:0.002]];
    }
  }
  return true;
}

// Runs what is due now.
inline void turn() {
  for (int time = 0; time < 5; ++time) {
    @autoreleasepool {
      [NSRunLoop.mainRunLoop runMode:NSDefaultRunLoopMode beforeDate:[NSDate dateWithTimeIntervalSinceNow:0.001]];
    }
  }
}
