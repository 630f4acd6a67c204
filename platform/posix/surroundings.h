// What a process inherits from the process that started it, and the passing of time.
#pragma once

#include <chrono>
#include <optional>
#include <string>

// These implement Processes::writesToTerminal, environmentVariable, workingFolder and pause.
bool standardOutputIsTerminal();
std::optional<std::string> variableOfEnvironment(const std::string& name);
std::string currentFolder();
void pauseThread(std::chrono::milliseconds duration);
