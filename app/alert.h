// The one way the program reports a result or an error.
#pragma once

#include <string>

// True exactly while a sort runs that no dialog of the user's started. Whoever starts such a sort sets it just
// before and clears it just after; everyone else only reads it.
extern bool automatic;

// Brings the program to the front with a modal dialog of one button and returns when the user dismisses it; or,
// while `automatic` is true, shows nothing and writes the title, ": " and the message as one line to standard
// output, flushed, so that it reaches a log file or a pipe at once; made harmless, because a path may hold anything.
void alert(const std::string& title, const std::string& message);
