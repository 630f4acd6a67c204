// Login agents on Linux, which has no launchd. A loaded agent is an autostart entry of the user's session; the entry
// runs the program of the agent's property list.
#pragma once

#include <string>

// Exit statuses of launchctl.
enum class AgentStatus {
  done = 0,
  notLoaded = 3,     // bootout
  failed = 5,        // bootstrap
  notFound = 113,    // print
  wrongDomain = 125  // not this user's session
};

class LoginAgents {
 public:
  // `configurationFolder` contains the folder "autostart" and may not exist. `runner` is the absolute path of the
  // program that the entries start with "run" and the path of the agent's property list as its arguments.
  LoginAgents(std::string configurationFolder, std::string runner);

  // Loads the agent of a property list (Label, ProgramArguments, StandardOutPath, StandardErrorPath), and starts it at
  // once if RunAtLoad is true. `domain` must be "gui/" + the user ID. A relative path counts from the working folder.
  // Prints one line on standard error on failure.
  AgentStatus bootstrap(const std::string& domain, const std::string& propertyList);

  // Returns done if the agent of a service target (domain + "/" + label) is loaded, notFound otherwise.
  AgentStatus print(const std::string& serviceTarget) const;

  // Unloads the agent of a service target. A running program of the agent continues.
  AgentStatus bootout(const std::string& serviceTarget);

  // Replaces this process by the program of a property list, with its output appended to StandardOutPath and
  // StandardErrorPath, in lines with times if the program is one of ours (see event_log.h). Returns only on failure,
  // and then prints one line on standard error: on this process's before the property list is read, on the agent's
  // afterwards.
  static AgentStatus run(const std::string& propertyList);

 private:
  // `propertyList` is an absolute path. Throws an exception of any type on failure.
  void load(const std::string& propertyList) const;
  std::string entryPath(const std::string& label) const;

  std::string configurationFolder_;
  std::string runner_;
};
