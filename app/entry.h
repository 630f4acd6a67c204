// The program behind main(): what the arguments choose.
#pragma once

#include <memory>

#include "app/sorter_delegate.h"
#include "platform/arguments.h"
#include "platform/platform.h"

// The application and its controller, while runQuillery() runs them; null otherwise. If the process ends inside the
// application's loop, the controller is not destroyed, because the loop still uses its windows and its menu.
extern Application* app;
extern std::shared_ptr<SorterDelegate>& delegate;

// Runs the program and returns its exit status. "--self-test" runs only the self-test, "--help" and "--version" only
// print, and an unknown option is an error with status 2. "--login", which the login agent passes, returns at once if
// another instance is running. Otherwise the menu-bar program runs until it quits, on the platform that `withDesktop`
// makes; it is made only then, because the other cases need no screen.
int runQuillery(const Arguments& arguments, const Platform& (*withDesktop)());
