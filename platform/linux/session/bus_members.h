// Tracks bus connections and the names they own or queue for.
#pragma once

#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

// A process that owned or queued for a name has left the bus.
struct Departure {
  std::string name;
  int process = 0;  // -1 if unknown
};

// Connections are identified by their unique names. Facts about a connection that is not on the bus are ignored.
class BusMembers {
 public:
  void arrived(const std::string& connection);
  void hasProcess(const std::string& connection, int process);
  // The connection owns the name or is queued for it. This stays recorded when the connection releases the name,
  // because an application that quits does so before it leaves the bus.
  void hasName(const std::string& connection, const std::string& name);

  // Returns a departure for each name of the connection, in alphabetical order. Omits names that another connection of
  // the same process has: the process departs with the last of them.
  std::vector<Departure> left(const std::string& connection);

  // Returns the processes that have the name, one element per connection, in no particular order.
  std::vector<int> processesWith(const std::string& name) const;

 private:
  struct Member {
    std::optional<int> process;
    std::set<std::string> names;
  };

  bool processHasName(int process, const std::string& name) const;

  std::map<std::string, Member> members_;
};
