#include "platform/linux/detached_process.h"

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdlib>

#include "platform/linux/word_pointers.h"

namespace {

void resetSignals() {
  for (int number = 1; number < NSIG; ++number) static_cast<void>(signal(number, SIG_DFL));
  sigset_t none;
  sigemptyset(&none);
  sigprocmask(SIG_SETMASK, &none, nullptr);
}

void closeDescriptors() {
  const int nowhere = open("/dev/null", O_RDWR);
  for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) dup2(nowhere, stream);
  if (close_range(STDERR_FILENO + 1, ~0U, 0) == 0) return;
  const long limit = sysconf(_SC_OPEN_MAX);  // kernels before 5.9 have no close_range
  for (int descriptor = STDERR_FILENO + 1; descriptor < limit; ++descriptor) close(descriptor);
}

// Runs in a forked process. Other threads may have held the allocator's locks at the fork, so this allocates no memory.
[[noreturn]] void becomeDetached(char* const* command, const char* folder) {
  setsid();
  if (fork() != 0) _exit(EXIT_SUCCESS);  // not a session leader from here on, so it cannot acquire a terminal
  resetSignals();
  closeDescriptors();
  if (*folder == '\0' || chdir(folder) == 0) execvp(*command, command);
  _exit(EXIT_FAILURE);
}

}  // namespace

void startDetached(const std::vector<std::string>& command, const std::string& folder) {
  std::vector<std::string> copies = command;
  const std::vector<char*> words = pointersTo(copies);
  const pid_t child = fork();
  if (child == 0) becomeDetached(words.data(), folder.c_str());
  while (child > 0 && waitpid(child, nullptr, 0) < 0 && errno == EINTR) continue;
}
