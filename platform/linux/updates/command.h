// Running another program and reading what it prints.
#pragma once

#include <sys/types.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "platform/linux/session/event_loop.h"
#include "platform/posix/file_descriptor.h"

struct CommandResult {
  int status = 127;    // the exit status; 127 if the program could not be started, 128 if a signal ended it
  std::string output;  // the last 64 KB that it printed, also on standard error
};

// A program that runs in the locale C.UTF-8, without standard input.
class Command {
 public:
  // Starts `words[0]`, which is searched for in PATH if it has no slash. The loop must outlive the command, and it
  // calls `ended` once, which may destroy the command. Destroying a command that runs does not end the program.
  Command(EventLoop& loop, std::vector<std::string> words, std::function<void(const CommandResult&)> ended);
  ~Command();
  Command(const Command&) = delete;
  Command& operator=(const Command&) = delete;

 private:
  void start(std::vector<std::string>& words, int output);
  void readOutput();
  void finish();

  std::function<void(const CommandResult&)> ended_;
  CommandResult result_;
  pid_t process_ = -1;
  FileDescriptor output_{-1};
  FileDescriptor end_{-1};  // readable once the program has ended
  std::unique_ptr<DescriptorWatch> outputWatch_;
  std::unique_ptr<DescriptorWatch> endWatch_;
};
