#include "platform/linux/session/termination_signals.h"

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <system_error>
#include <utility>

#include "platform/error.h"

namespace {

// Global because a signal handler takes no argument.
std::atomic<int> signalledDescriptor{-1};

extern "C" void noteSignal(int) {
  const int savedError = errno;
  // If the pipe is full, the loop has a note to read already.
  if (write(signalledDescriptor, "", 1) < 0) errno = savedError;
}

std::pair<FileDescriptor, FileDescriptor> makePipe() {
  std::array<int, 2> ends{};
  if (pipe2(ends.data(), O_CLOEXEC | O_NONBLOCK) != 0)
    throw Error("POSIX", errno, "The program couldn’t be started: " + std::generic_category().message(errno) + ".");
  return {FileDescriptor(ends[0]), FileDescriptor(ends[1])};
}

void discardAll(int descriptor) {
  std::array<char, 64> notes{};
  while (uninterrupted([&] { return read(descriptor, notes.data(), notes.size()); }) > 0) continue;
}

}  // namespace

TerminationSignals::TerminationSignals(EventLoop& loop, std::function<void()> received)
    : TerminationSignals(loop, makePipe(), std::move(received)) {}

TerminationSignals::TerminationSignals(EventLoop& loop, std::pair<FileDescriptor, FileDescriptor> pipe,
                                       std::function<void()> received)
    : reader_(std::move(pipe.first)),
      writer_(std::move(pipe.second)),
      watch_(loop.watch(reader_.get(), Readiness::readable, [this, received = std::move(received)] {
        discardAll(reader_.get());
        received();
      })) {
  signalledDescriptor = writer_.get();
  struct sigaction action {};
  action.sa_handler = noteSignal;
  action.sa_flags = SA_RESTART;
  sigaction(SIGTERM, &action, &oldTermination_);
  sigaction(SIGINT, &action, &oldInterrupt_);
}

TerminationSignals::~TerminationSignals() {
  sigaction(SIGTERM, &oldTermination_, nullptr);
  sigaction(SIGINT, &oldInterrupt_, nullptr);
  signalledDescriptor = -1;
}
