// Services of the operating system for processes.
#pragma once

#include <optional>
#include <string>
#include <vector>

class Processes {
 public:
  virtual ~Processes() = default;

  // A fresh random UUID in canonical form: 36 characters, upper-case digits, 8-4-4-4-12.
  virtual std::string randomUuid() = 0;

  // This process, and the user whose it is.
  virtual int processIdentifier() = 0;
  virtual unsigned userIdentifier() = 0;

  // Whether what this process writes to its standard output goes to a terminal.
  virtual bool writesToTerminal() = 0;

  // A variable of this process's environment; absent if it is not set.
  virtual std::optional<std::string> environmentVariable(const std::string& name) = 0;

  // The folder that relative paths begin at: an absolute path. Throws Error if it is gone.
  virtual std::string workingFolder() = 0;

  // Runs a program, with no shell, nothing to read and its output discarded, and waits for its end. Answers its exit
  // status; of one that a signal ended, that signal's number. Throws Error if it cannot be started.
  virtual int run(const std::string& path, const std::vector<std::string>& arguments) = 0;
};
