// What a process finds around it when it starts.
#pragma once

#include <optional>
#include <string>

// What Processes::writesToTerminal, environmentVariable and workingFolder answer.
bool standardOutputIsTerminal();
std::optional<std::string> variableOfEnvironment(const std::string& name);
std::string currentFolder();
