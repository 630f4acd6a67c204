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
  return journal_.perform("run", line, [&] { return arguments.empty() ? 0 : statuses_[arguments.front()]; });
}

std::string VirtualProcesses::randomUuid() {
  return journal_.perform("uuid", {}, [&] { return uuid(++given_); });
}

std::string VirtualProcesses::uuid(int number) {
  std::array<char, 37> text{};
  (void)std::snprintf(text.data(), text.size(), "5D2A9C1E-0B7F-4E63-9A48-%012X", static_cast<unsigned>(number));
  return text.data();
}
