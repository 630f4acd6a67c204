// SIGTERM and SIGINT as events of the loop.
#pragma once

#include <csignal>
#include <functional>
#include <memory>
#include <utility>

#include "platform/linux/session/event_loop.h"
#include "platform/posix/file_descriptor.h"

// Handles SIGTERM and SIGINT as long as it lives, then restores the handlers before it. Only one may live at a time.
class TerminationSignals {
 public:
  // Calls `received` from the loop after one or more signals. The loop must outlive it. Throws Error if the system
  // creates no pipe.
  TerminationSignals(EventLoop& loop, std::function<void()> received);
  ~TerminationSignals();
  TerminationSignals(const TerminationSignals&) = delete;
  TerminationSignals& operator=(const TerminationSignals&) = delete;

 private:
  // `pipe` is its reading and its writing end.
  TerminationSignals(EventLoop& loop, std::pair<FileDescriptor, FileDescriptor> pipe, std::function<void()> received);

  FileDescriptor reader_;
  FileDescriptor writer_;
  std::unique_ptr<DescriptorWatch> watch_;
  struct sigaction oldTermination_ {};
  struct sigaction oldInterrupt_ {};
};
