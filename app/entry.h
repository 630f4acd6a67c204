// The way into the program, after its platform is there.
#pragma once

#include <memory>

#include "app/sorter_delegate.h"
#include "platform/arguments.h"
#include "platform/platform.h"

// The application and its controller, for as long as runQuillery() runs them.
extern Application* app;
extern std::shared_ptr<SorterDelegate> delegate;

// Does what the arguments say and answers the exit status. "--self-test" runs the self-test and nothing else.
// "--login", which the login agent passes, ends at once if the program runs already. Otherwise the menu-bar program
// runs until it is quit, on the platform that `withDesktop` makes, which nothing else has to wait for.
int runQuillery(const Arguments& arguments, const Platform& (*withDesktop)());
