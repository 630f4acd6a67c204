// The application's main menu.
#pragma once

#import <AppKit/AppKit.h>

#include "platform/macos/objective_c.h"

// Returns a menu with Quit, Close, Cut, Copy, Paste and Select All. AppKit never draws the main menu of an application
// without a Dock icon, but takes the keys of these commands from it, for the windows and for Sparkle's.
NSMenu* mainMenu();
