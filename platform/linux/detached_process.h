// Starting a program that goes on by itself.
#pragma once

#include <string>
#include <vector>

// Starts a program, the one given or for a name without a slash the first in PATH, with the arguments that follow. It
// has nothing to do with this process from then on: it is no child, has a session of its own, nothing to read from and
// nowhere to write to, none of our descriptors, and the usual signal handling. `folder` is where it works; ours if it
// is empty. Nothing tells of a failure.
void startDetached(const std::vector<std::string>& command, const std::string& folder);
