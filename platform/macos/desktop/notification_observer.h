// Observing the notifications of Foundation and AppKit.
#pragma once

#include <functional>

#include "platform/macos/objective_c.h"
#include "platform/workspace.h"

// Calls `handler`, which must not throw, on the main queue for each notification of this name that the centre has, for
// as long as there is a reference to the observation.
Observation observeNotifications(NSNotificationCenter* center, NSNotificationName name,
                                 std::function<void(NSNotification*)> handler);
