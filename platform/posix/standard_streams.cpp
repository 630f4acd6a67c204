#include "platform/posix/standard_streams.h"

#include <fcntl.h>
#include <unistd.h>

#include <csignal>
#include <initializer_list>

void prepareStandardStreams() {
  static_cast<void>(std::signal(SIGPIPE, SIG_IGN));
  for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
    if (fcntl(stream, F_GETFD) >= 0) continue;
    static_cast<void>(open("/dev/null", O_RDONLY));  // takes the lowest free number, which is this stream's
  }
}
