// Observes notifications of Foundation and AppKit.
#pragma once

#include <functional>

#include "platform/macos/objective_c.h"
#include "platform/workspace.h"

// Calls `handler`, which must not throw, on the main queue for each notification of this name that `center` posts,
// until the observation is released.
Observation observeNotifications(NSNotificationCenter* center, NSNotificationName name,
                                 std::function<void(NSNotification*)> handler);
