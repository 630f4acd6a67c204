// Gives the current process mounts of its own. It should be a forked one.
#pragma once

#include <string>

// Gives the current process its own mount namespace. Returns the empty string, or the reason if that fails.
std::string separateMounts();

// The same, with an empty /run.
std::string separateRun();
