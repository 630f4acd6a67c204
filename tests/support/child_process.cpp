#include "tests/support/child_process.h"

#include <grp.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <exception>

namespace {

[[noreturn]] void reportAndExit(int pipe, const std::function<std::string()>& work) {
  std::string report;
  try {
    report = work();
  } catch (const std::exception& error) {
    report = std::string("unexpected: ") + error.what();
  }
  const bool written = write(pipe, report.data(), report.size()) == static_cast<ssize_t>(report.size());
  _exit(written ? EXIT_SUCCESS : EXIT_FAILURE);
}

}  // namespace

std::string inChildProcess(const std::function<std::string()>& work) {
  std::array<int, 2> ends{};
  if (pipe(ends.data()) != 0) {
    ADD_FAILURE() << "no pipe: " << std::strerror(errno);
    return {};
  }
  const pid_t child = fork();
  if (child == 0) {
    close(ends[0]);
    reportAndExit(ends[1], work);
  }
  close(ends[1]);
  std::string report;
  std::array<char, 4096> part{};
  for (ssize_t count = 0; (count = read(ends[0], part.data(), part.size())) > 0;)
    report.append(part.data(), static_cast<std::size_t>(count));
  close(ends[0]);
  int status = 0;
  EXPECT_EQ(waitpid(child, &status, 0), child);
  EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == EXIT_SUCCESS) << "the process ended with status " << status;
  return report;
}

std::string inUnprivilegedProcess(const std::function<std::string()>& work) {
  return inChildProcess([&]() -> std::string {
    if (geteuid() == 0 &&
        (setgroups(0, nullptr) != 0 || setgid(unprivilegedUser) != 0 || setuid(unprivilegedUser) != 0))
      return std::string("cannot become another user: ") + std::strerror(errno);
    return work();
  });
}
