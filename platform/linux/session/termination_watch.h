// Reports processes that leave the session bus after they owned or queued for a name there.
#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "platform/linux/session/bus_connection.h"
#include "platform/linux/session/bus_members.h"
#include "platform/linux/session/clock_timers.h"

// All names count except the bus's own and the unique names of connections.
//
// The bus knows nothing about a process that has left, so the names are recorded beforehand. The bus announces
// connections and owners of names, but not who queues for a name. The watch asks for the queues when it starts, and
// again after a connection arrives, which is when applications take their names: `queueChecks` times, first after
// `firstCheckDelay`, then each time after twice the delay before (50 seconds in the end). A process that comes and goes
// between two checks, or that queues later, goes unnoticed. A check makes one call per name on the bus, about a hundred
// on a desktop.
class TerminationWatch {
 public:
  static constexpr std::chrono::milliseconds firstCheckDelay{50};
  static constexpr int queueChecks = 10;

  // Follows the rules for message handlers of BusConnection, and may not destroy the watch.
  using DepartureHandler = std::function<void(const Departure&)>;

  // Knows who is on the bus when it returns, unless the bus takes longer than `timeout`; then as soon as the bus
  // replies. Without a session bus, there are no departures. The loop must outlive the watch. Throws Error if the
  // system creates no timer.
  TerminationWatch(EventLoop& loop, DepartureHandler handler, std::chrono::microseconds timeout);

  // Returns the processes on the bus that are known to own the name, to queue for it or to have done so.
  std::vector<int> processesWith(const std::string& name) const { return members_.processesWith(name); }

 private:
  void callBus(const char* method, const char* argument, BusConnection::MessageHandler handler);
  void add(const std::string& name);
  void ownerChanged(const std::string& name, const std::string& oldOwner, const std::string& newOwner);
  void arrived(const std::string& connection);
  void left(const std::string& connection);
  void requestQueue(const std::string& name);
  void checkQueuesAfter(std::chrono::milliseconds delay);
  void checkQueues();

  DepartureHandler handler_;
  BusMembers members_;
  std::set<std::string> names_;      // all that have an owner
  std::set<std::string> newcomers_;  // connections that may still queue for a name
  int unansweredCalls_ = 0;
  int checksLeft_ = 0;
  ClockTimers clock_;
  std::shared_ptr<Timer> nextCheck_;  // null before the first one
  std::chrono::steady_clock::time_point nextCheckTime_;
  BusConnection bus_;
};
