// The target that AppKit's controls and menu items send their action to.
#pragma once

#include "platform/macos/objective_c.h"
#include "platform/window.h"

// Calls the action, if it is not empty, for `performAction:` from any sender.
@interface ActionTarget : NSObject
- (instancetype)initWithAction:(Action)action;
- (void)performAction:(id)sender;
@end
