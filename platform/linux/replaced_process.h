// Another program in the place of this one.
#pragma once

#include <string>

// Runs the program at an absolute path, without arguments, in this process instead of the present program. It keeps the
// process ID, the environment and the standard streams; all other descriptors are closed. Does not return. Throws Error
// if the program cannot be run.
[[noreturn]] void replaceProcess(const std::string& executable);
