// Who is on a bus, and which names they have to do with.
#pragma once

#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

// A process that had to do with a name has left the bus.
struct Departure {
  std::string name;
  int process = 0;  // -1 if the bus never told
};

// Connections are known by their unique names. What is said of one that is not on the bus is ignored.
class BusMembers {
 public:
  void arrived(const std::string& connection);
  void hasProcess(const std::string& connection, int process);
  // It owns the name or waits for it. That stays true of it even if it gives the name up: an application that quits
  // does so before it leaves.
  void hasName(const std::string& connection, const std::string& name);

  // A departure for each name of the connection, in alphabetical order, but for those that another connection of the
  // same process has: the process is there until the last of them leaves.
  std::vector<Departure> left(const std::string& connection);

  // The processes that have the name, one entry for each connection, in no particular order.
  std::vector<int> processesWith(const std::string& name) const;

 private:
  struct Member {
    std::optional<int> process;
    std::set<std::string> names;
  };

  bool processHasName(int process, const std::string& name) const;

  std::map<std::string, Member> members_;
};
