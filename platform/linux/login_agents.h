// Login agents on Linux: what stands in for launchd. An agent is loaded if the user's session has an autostart entry
// for it, which runs what its property list says.
#pragma once

#include <string>

// The answers that launchctl gives; the numbers are its own.
enum class AgentStatus {
  done = 0,
  notLoaded = 3,     // bootout
  failed = 5,        // bootstrap
  notFound = 113,    // print
  wrongDomain = 125  // not the session of this user
};

class LoginAgents {
 public:
  // `configurationFolder` holds the folder "autostart"; it need not exist. `runner` is the absolute path of the program
  // that the entries run, with "run" and the path of the agent's property list; empty: nothing can be loaded.
  LoginAgents(std::string configurationFolder, std::string runner);

  // Loads the agent of a property list (a Label, ProgramArguments, and a RunAtLoad that starts it at once) into
  // "gui/" + the user's identifier. What fails is said in one line on standard error.
  AgentStatus bootstrap(const std::string& domain, const std::string& propertyList);
  // Whether the agent of a service target (domain + "/" + label) is loaded; and unloads it, which ends nothing.
  AgentStatus print(const std::string& serviceTarget) const;
  AgentStatus bootout(const std::string& serviceTarget);

  // Becomes what the property list says, with what it prints appended to its StandardOutPath and StandardErrorPath.
  // Returns only if that fails.
  static AgentStatus run(const std::string& propertyList);

 private:
  std::string entryOf(const std::string& label) const;

  std::string configurationFolder_;
  std::string runner_;
};
