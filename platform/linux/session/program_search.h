// Where a program is.
#pragma once

#include <optional>
#include <string>

// The path of a program that can be executed: the one given, or for a name without a slash the first in PATH.
std::optional<std::string> findProgram(const std::string& program);
