// The system's requests to end, as events of the loop.
#pragma once

#include <QSocketNotifier>
#include <csignal>
#include <functional>
#include <utility>

#include "platform/posix/file_descriptor.h"

// Takes SIGTERM and SIGINT for as long as it lives; what was to become of them before is so again after it. Only one of
// these may live at a time. There must be a QCoreApplication.
class TerminationSignals {
 public:
  // `received` is called by the loop after one of them or several.
  explicit TerminationSignals(std::function<void()> received);
  ~TerminationSignals();
  TerminationSignals(const TerminationSignals&) = delete;
  TerminationSignals& operator=(const TerminationSignals&) = delete;

 private:
  // The two ends of a pipe.
  TerminationSignals(std::pair<FileDescriptor, FileDescriptor> pipe, std::function<void()> received);

  FileDescriptor reader_;
  FileDescriptor writer_;
  QSocketNotifier notifier_{QSocketNotifier::Read};
  struct sigaction oldTermination_ {};
  struct sigaction oldInterrupt_ {};
};
