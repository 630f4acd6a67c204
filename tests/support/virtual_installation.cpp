#include "tests/support/virtual_installation.h"

#include <cstdio>

std::string VirtualBundle::path() {
  return journal_.perform("bundle path", {}, [&] { return path_; });
}

std::string VirtualProcesses::randomUuid() {
  return journal_.perform("uuid", {}, [&] { return uuid(++given_); });
}

std::string VirtualProcesses::uuid(int number) {
  char text[37];
  (void)std::snprintf(text, sizeof text, "5D2A9C1E-0B7F-4E63-9A48-%012X", static_cast<unsigned>(number));
  return text;
}
