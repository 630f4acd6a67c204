// What a process inherits from the process that started it.
#pragma once

#include <optional>
#include <string>

// These implement Processes::writesToTerminal, environmentVariable and workingFolder.
bool standardOutputIsTerminal();
std::optional<std::string> variableOfEnvironment(const std::string& name);
std::string currentFolder();
