#include "platform/linux/session/bus_members.h"

#include <algorithm>

void BusMembers::arrived(const std::string& connection) { members_.try_emplace(connection); }

void BusMembers::hasProcess(const std::string& connection, int process) {
  const auto member = members_.find(connection);
  if (member != members_.end()) member->second.process = process;
}

void BusMembers::hasName(const std::string& connection, const std::string& name) {
  const auto member = members_.find(connection);
  if (member != members_.end()) member->second.names.insert(name);
}

std::vector<Departure> BusMembers::left(const std::string& connection) {
  std::vector<Departure> departures;
  const auto leaving = members_.extract(connection);
  if (leaving.empty()) return departures;
  const auto& [process, names] = leaving.mapped();
  for (const std::string& name : names)
    if (!process || !processHasName(*process, name)) departures.push_back({name, process.value_or(-1)});
  return departures;
}

std::vector<int> BusMembers::processesWith(const std::string& name) const {
  std::vector<int> processes;
  for (const auto& [connection, member] : members_)
    if (member.names.contains(name)) processes.push_back(member.process.value_or(-1));
  return processes;
}

bool BusMembers::processHasName(int process, const std::string& name) const {
  return std::any_of(members_.begin(), members_.end(), [&](const auto& entry) {
    return entry.second.process == process && entry.second.names.contains(name);
  });
}
