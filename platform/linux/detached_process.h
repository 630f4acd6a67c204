// Starting a program that is independent of this process.
#pragma once

#include <string>
#include <vector>

// Starts the program `command[0]`, which is searched for in PATH if it has no slash, with the other elements as its
// arguments. The program is no child of this process and has a session of its own. It inherits no descriptors, its
// standard streams are /dev/null, and its signals have their default handling. Its working folder is `folder`, or the
// current one if that is empty. Failures are not reported.
void startDetached(const std::vector<std::string>& command, const std::string& folder);
