#include "platform/linux/updates/command.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/eventfd.h>
#include <sys/syscall.h>
#include <sys/wait.h>

#include <array>
#include <string_view>
#include <utility>

#include "platform/linux/spawn_settings.h"
#include "platform/linux/word_pointers.h"

namespace {

constexpr std::size_t mostOutput = 65536;
constexpr int endedBySignal = 128;

// This process's environment with another locale.
std::vector<std::string> environmentInEnglish() {
  std::vector<std::string> variables = {"LC_ALL=C.UTF-8"};
  for (char** each = environ; *each != nullptr; ++each)
    if (!std::string_view(*each).starts_with("LC_ALL=")) variables.emplace_back(*each);
  return variables;
}

}  // namespace

Command::Command(EventLoop& loop, std::vector<std::string> words, std::function<void(const CommandResult&)> ended)
    : ended_(std::move(ended)) {
  std::array<int, 2> ends{-1, -1};
  if (pipe2(ends.data(), O_CLOEXEC | O_NONBLOCK) == 0) {
    output_ = FileDescriptor(ends[0]);
    const FileDescriptor writer(ends[1]);
    fcntl(writer.get(), F_SETFL, 0);  // the program may block
    start(words, writer.get());
  }
  // Kernels before 5.3 do not report the end of a process, so that `finish` waits for it.
  if (!end_.isOpen()) end_ = FileDescriptor(eventfd(1, EFD_CLOEXEC | EFD_NONBLOCK));
  if (output_.isOpen()) outputWatch_ = loop.watch(output_.get(), Readiness::readable, [this] { readOutput(); });
  endWatch_ = loop.watch(end_.get(), Readiness::readable, [this] { finish(); });
}

Command::~Command() = default;

void Command::start(std::vector<std::string>& words, int output) {
  const SpawnSettings settings(output);
  std::vector<std::string> variables = environmentInEnglish();
  const std::vector<char*> arguments = pointersTo(words);
  const std::vector<char*> environment = pointersTo(variables);
  if (posix_spawnp(&process_, words[0].c_str(), settings.streams(), settings.signals(), arguments.data(),
                   environment.data()) != 0)
    process_ = -1;
  else
    end_ = FileDescriptor(static_cast<int>(syscall(SYS_pidfd_open, process_, 0)));
}

void Command::readOutput() {
  std::array<char, 4096> block{};
  ssize_t count = 0;
  while ((count = uninterrupted([&] { return read(output_.get(), block.data(), block.size()); })) > 0) {
    result_.output.append(block.data(), static_cast<std::size_t>(count));
    if (result_.output.size() > mostOutput) result_.output.erase(0, result_.output.size() - mostOutput);
  }
  if (count == 0) outputWatch_->setEnabled(false);
}

void Command::finish() {
  endWatch_->setEnabled(false);
  if (outputWatch_) readOutput();
  int status = 0;
  if (process_ > 0 && uninterrupted([&] { return waitpid(process_, &status, 0); }) == process_)
    result_.status = WIFEXITED(status) ? WEXITSTATUS(status) : endedBySignal;
  const auto ended = std::move(ended_);  // it may destroy this
  const CommandResult result = std::move(result_);
  ended(result);
}
