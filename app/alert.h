// How the program reports a result or an error.
#pragma once

#include <string>

// True exactly while an unattended sort runs, one that no dialog started. Only the code that starts such a sort sets
// it; everything else reads it.
extern bool automatic;

// Brings the program to the front with a modal dialog of one button, and returns when the user dismisses it. While
// `automatic` is true, prints the title, ": " and the message on standard output instead and flushes, so that a log
// file or a pipe has the line at once. Characters that a terminal would obey are escaped, because a path may contain
// any.
void alert(const std::string& title, const std::string& message);
