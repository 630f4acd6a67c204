// The program that replaces launchctl on Linux: loads, unloads, finds and runs login agents of the user's session.
#include <iostream>
#include <string>
#include <vector>

#include "platform/linux/installed_bundle.h"
#include "platform/linux/login_agents.h"
#include "platform/linux/property_list_defaults.h"

int main(int count, char** values) {
  const std::vector<std::string> words(values + 1, values + count);
  const std::string command = words.empty() ? "" : words.front();
  LoginAgents agents(configurationFolder(), runningExecutable());
  if (command == "print" && words.size() == 2) return static_cast<int>(agents.print(words[1]));
  if (command == "bootout" && words.size() == 2) return static_cast<int>(agents.bootout(words[1]));
  if (command == "bootstrap" && words.size() == 3) return static_cast<int>(agents.bootstrap(words[1], words[2]));
  if (command == "run" && words.size() == 2) return static_cast<int>(LoginAgents::run(words[1]));
  std::cerr << "usage: quillery-launchctl print|bootout gui/UID/LABEL\n"
               "       quillery-launchctl bootstrap gui/UID PROPERTY-LIST\n"
               "       quillery-launchctl run PROPERTY-LIST\n";
  return 64;
}
