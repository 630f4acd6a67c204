// The one class that AppKit's controls and menu items send their action to.
#pragma once

#include "platform/macos/objective_c.h"
#include "platform/window.h"

// Calls an action, if it is one, whoever sends `performAction:`.
@interface ActionTarget : NSObject
- (instancetype)initWithAction:(Action)action;
- (void)performAction:(id)sender;
@end
