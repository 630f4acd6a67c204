#include "tests/support/program.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cstdio>
#include <cstring>
#include <string_view>

#ifdef __APPLE__
extern char** environ;  // not declared in a header of macOS
#endif

namespace {

// An unnamed temporary file, because a pipe would block a program that writes much before anybody reads.
class Sink {
 public:
  Sink() : file_(std::tmpfile()) {
    EXPECT_NE(file_, nullptr) << std::strerror(errno);
    fcntl(descriptor(), F_SETFD, FD_CLOEXEC);
  }
  ~Sink() { static_cast<void>(std::fclose(file_)); }
  Sink(const Sink&) = delete;
  Sink& operator=(const Sink&) = delete;

  int descriptor() const { return fileno(file_); }
  std::string content() const {
    std::string text;
    std::array<char, 4096> part{};
    for (ssize_t count = 0;
         (count = pread(descriptor(), part.data(), part.size(), static_cast<off_t>(text.size()))) > 0;)
      text.append(part.data(), static_cast<std::size_t>(count));
    return text;
  }

 private:
  std::FILE* file_;
};

std::vector<std::string> variables(const Environment& changes) {
  std::vector<std::string> list;
  for (char** variable = environ; *variable != nullptr; ++variable) {
    const std::string_view text(*variable);
    if (!changes.contains(std::string(text.substr(0, text.find('='))))) list.emplace_back(text);
  }
  for (const auto& [name, value] : changes)
    if (value) list.push_back(name + '=' + *value);
  return list;
}

// A null-terminated array of pointers to the strings.
std::vector<char*> pointers(std::vector<std::string>& strings) {
  std::vector<char*> list;
  list.reserve(strings.size() + 1);
  for (std::string& text : strings) list.push_back(text.data());
  list.push_back(nullptr);
  return list;
}

}  // namespace

Ending run(const std::string& path, const std::vector<std::string>& arguments, const Environment& environment,
           std::optional<int> output) {
  const Sink ownOutput;
  const Sink error;
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
  posix_spawn_file_actions_adddup2(&actions, output.value_or(ownOutput.descriptor()), STDOUT_FILENO);
  posix_spawn_file_actions_adddup2(&actions, error.descriptor(), STDERR_FILENO);
  std::vector<std::string> words = {path};
  words.insert(words.end(), arguments.begin(), arguments.end());
  std::vector<std::string> settings = variables(environment);
  pid_t process = 0;
  const int problem =
      posix_spawn(&process, path.c_str(), &actions, nullptr, pointers(words).data(), pointers(settings).data());
  posix_spawn_file_actions_destroy(&actions);
  EXPECT_EQ(problem, 0) << path << ": " << std::strerror(problem);
  if (problem != 0) return {};
  int status = 0;
  EXPECT_EQ(waitpid(process, &status, 0), process);
  return {WIFEXITED(status) ? std::optional(WEXITSTATUS(status)) : std::nullopt, ownOutput.content(), error.content()};
}
