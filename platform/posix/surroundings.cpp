#include "platform/posix/surroundings.h"

#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <system_error>
#include <thread>

#include "platform/error.h"

bool standardOutputIsTerminal() { return isatty(STDOUT_FILENO) == 1; }

std::optional<std::string> variableOfEnvironment(const std::string& name) {
  const char* value = std::getenv(name.c_str());
  return value != nullptr ? std::optional<std::string>(value) : std::nullopt;
}

std::string currentFolder() {
  std::error_code problem;
  const std::filesystem::path folder = std::filesystem::current_path(problem);
  if (problem)
    throw Error("POSIX", problem.value(), "The working folder couldn’t be found: " + problem.message() + ".");
  return folder.string();
}

void pauseThread(std::chrono::milliseconds duration) { std::this_thread::sleep_for(duration); }
