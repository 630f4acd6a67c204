// The error of a program that cannot be run.
#pragma once

#include <string>
#include <system_error>

#include "platform/error.h"
#include "values/harmless_text.h"

// Returns "The program “/bin/a” couldn’t be run: Permission denied.", in the system's words for the errno `problem`.
// The path is escaped by harmlessLine.
inline Error cannotRun(const std::string& path, int problem) {
  return {
      "POSIX", problem,
      "The program “" + harmlessLine(path) + "” couldn’t be run: " + std::generic_category().message(problem) + "."};
}
