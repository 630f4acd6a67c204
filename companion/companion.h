// The command-line companion, after its platform is there.
#pragma once

#include "platform/arguments.h"
#include "platform/calendar.h"

// Does what the arguments say, at the time `now`, prints what came of it and answers the exit status. Nothing that is
// printed can make a terminal do anything but show it, colours apart, and those are for terminals that want them.
int runCompanion(const Arguments& arguments, Instant now);
