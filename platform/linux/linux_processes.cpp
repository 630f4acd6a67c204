#include "platform/linux/linux_processes.h"

#include <spawn.h>
#include <sys/random.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <system_error>

#include "platform/error.h"
#include "platform/linux/installed_bundle.h"
#include "platform/linux/run_error.h"
#include "platform/linux/spawn_settings.h"
#include "platform/linux/word_pointers.h"
#include "platform/posix/file_descriptor.h"
#include "platform/posix/surroundings.h"

namespace {

using Uuid = std::array<std::uint8_t, 16>;

Uuid randomBytes() {
  Uuid bytes{};
  ssize_t count = 0;
  do {
    count = getrandom(bytes.data(), bytes.size(), 0);  // up to 256 bytes are never split
  } while (count < 0 && errno == EINTR);
  if (count != static_cast<ssize_t>(bytes.size()))
    throw Error("POSIX", errno, "No random bytes are available: " + std::generic_category().message(errno) + ".");
  return bytes;
}

std::string canonicalText(const Uuid& uuid) {
  constexpr const char* digits = "0123456789ABCDEF";
  std::string text;
  for (std::size_t index = 0; index < uuid.size(); ++index) {
    if (index == 4 || index == 6 || index == 8 || index == 10) text += '-';
    text += digits[uuid[index] >> 4];
    text += digits[uuid[index] & 0x0F];
  }
  return text;
}

pid_t start(const std::string& path, std::vector<std::string> words) {
  words.insert(words.begin(), path);
  const SpawnSettings settings;
  pid_t process = 0;
  const int problem =
      posix_spawn(&process, path.c_str(), settings.streams(), settings.signals(), pointersTo(words).data(), environ);
  if (problem != 0) throw cannotRun(path, problem);
  return process;
}

}  // namespace

std::string LinuxProcesses::randomUuid() {
  Uuid uuid = randomBytes();
  uuid[6] = static_cast<std::uint8_t>((uuid[6] & 0x0F) | 0x40);  // version 4: random
  uuid[8] = static_cast<std::uint8_t>((uuid[8] & 0x3F) | 0x80);  // the variant of RFC 4122
  return canonicalText(uuid);
}

int LinuxProcesses::processIdentifier() { return getpid(); }

unsigned LinuxProcesses::userIdentifier() { return getuid(); }

bool LinuxProcesses::writesToTerminal() { return standardOutputIsTerminal(); }

std::optional<std::string> LinuxProcesses::environmentVariable(const std::string& name) {
  return variableOfEnvironment(name);
}

std::string LinuxProcesses::workingFolder() { return currentFolder(); }

int LinuxProcesses::run(const std::string& path, const std::vector<std::string>& arguments) {
  const std::string program =
      path == "/bin/launchctl" ? helperProgram(runningExecutable(), "quillery-launchctl") : path;
  const pid_t process = start(program, arguments);
  int status = 0;
  if (uninterrupted([&] { return waitpid(process, &status, 0); }) < 0) throw cannotRun(program, errno);
  return WIFEXITED(status) ? WEXITSTATUS(status) : WTERMSIG(status);
}

void LinuxProcesses::pause(std::chrono::milliseconds duration) { pauseThread(duration); }
