// Observes notifications of Foundation and AppKit.
#pragma once

#include <functional>

#include "platform/macos/objective_c.h"
#include "platform/workspace.h"

// Calls `handler`, which must not throw, on the main thread for each notification of this name that `center` posts,
// until the observation is released. It is called soon after the notification, also inside the loop of a modal dialog.
// The main operation queue would wait for a dialog that a block of that queue has opened.
Observation observeNotifications(NSNotificationCenter* center, NSNotificationName name,
                                 std::function<void(NSNotification*)> handler);
