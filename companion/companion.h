// The command-line companion behind main().
#pragma once

#include <string_view>

#include "platform/arguments.h"
#include "platform/calendar.h"

// Runs the command that the arguments name, prints its result and returns the exit status. `now` is the current time.
// All printed text is escaped for terminals; colours appear only on a terminal that supports them.
int runCompanion(const Arguments& arguments, Instant now);

// Prints an error as a line on standard error, escaped for terminals. If there is no memory for that, prints that.
void complain(std::string_view text) noexcept;
