#include "tests/support/virtual_installation.h"

#include <array>
#include <cstdio>

std::string VirtualBundle::path() {
  return journal_.perform("bundle path", {}, [&] { return path_; });
}

std::optional<std::string> VirtualBundle::information(const std::string& key) {
  const auto found = information_.find(key);
  return found == information_.end() ? std::nullopt : std::optional(found->second);
}

std::optional<std::string> VirtualProcesses::environmentVariable(const std::string& name) {
  const auto found = environment_.find(name);
  return found != environment_.end() ? std::optional(found->second) : std::nullopt;
}

int VirtualProcesses::run(const std::string& path, const std::vector<std::string>& arguments) {
  std::string line = path;
  for (const std::string& argument : arguments) line += " " + argument;
  return journal_.perform("run", line, [&] { return arguments.empty() ? 0 : statusOf(arguments.front()); });
}

int VirtualProcesses::statusOf(const std::string& subcommand) {
  if (auto& [status, times] = nextStatuses_[subcommand]; times > 0) {
    --times;
    return status;
  }
  if (const auto set = statuses_.find(subcommand); set != statuses_.end()) return set->second;
  const bool wasLoaded = isJobLoaded_;
  if (subcommand == "bootstrap") isJobLoaded_ = true;
  if (subcommand == "bootout") isJobLoaded_ = false;
  if (subcommand == "bootout" && !wasLoaded) return 3;
  if (subcommand == "print" && !wasLoaded) return 113;
  return 0;
}

void VirtualProcesses::pause(std::chrono::milliseconds duration) {
  journal_.perform("pause", std::to_string(duration.count()) + " ms", [&] { loop_.sleep(duration); });
}

std::string VirtualProcesses::randomUuid() {
  return journal_.perform("uuid", {}, [&] { return uuid(++given_); });
}

std::string VirtualProcesses::uuid(int number) {
  std::array<char, 37> text{};
  (void)std::snprintf(text.data(), text.size(), "5D2A9C1E-0B7F-4E63-9A48-%012X", static_cast<unsigned>(number));
  return text.data();
}
