// Services of the operating system for processes.
#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <vector>

class Processes {
 public:
  virtual ~Processes() = default;

  // Returns a new random UUID in canonical form: 36 characters, upper-case digits, 8-4-4-4-12. Throws Error if the
  // system has no random bytes.
  virtual std::string randomUuid() = 0;

  // Returns the ID of this process.
  virtual int processIdentifier() = 0;

  // Returns the ID of the user that this process runs as.
  virtual unsigned userIdentifier() = 0;

  // Returns true if the standard output of this process is a terminal.
  virtual bool writesToTerminal() = 0;

  // Returns the value of an environment variable; absent if it is not set.
  virtual std::optional<std::string> environmentVariable(const std::string& name) = 0;

  // Returns the working folder as an absolute path. Throws Error if the folder no longer exists.
  virtual std::string workingFolder() = 0;

  // Runs a program without a shell, with no input and with its output discarded, and waits until it ends. Nothing else
  // runs on this thread meanwhile. Returns the program's exit status, or the signal's number if a signal ended it.
  // Throws Error if the program cannot be started.
  virtual int run(const std::string& path, const std::vector<std::string>& arguments) = 0;

  // Returns after this time. Nothing else runs on this thread meanwhile.
  virtual void pause(std::chrono::milliseconds duration) = 0;
};
