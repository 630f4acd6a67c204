// Notices when a process leaves the session bus that owned a name there, or waited for one.
#pragma once

#include <QTimer>
#include <chrono>
#include <functional>
#include <set>
#include <string>

#include "platform/linux/session/bus_connection.h"
#include "platform/linux/session/bus_members.h"

// Every name counts that is not the bus's own and not one that the bus gives to connections.
//
// Once a process has left, nobody can say which it was and what it waited for, so all that is kept in mind beforehand.
// The bus announces connections and owners. It does not announce who waits in line for a name; that is asked when the
// watch begins, and after a connection has arrived, which is when applications take their names: first after
// `firstLook`, then `looks` times in all, each time twice as long after the one before (50 seconds in the end). One
// that comes and goes in between, or that gets in line later than that, goes unnoticed. A look asks one question for
// each name on the bus, a hundred on a desktop.
class TerminationWatch {
 public:
  static constexpr std::chrono::milliseconds firstLook{50};
  static constexpr int looks = 10;

  // Receives a departure; see the rules for receivers of BusConnection. It may not destroy the watch.
  using Receiver = std::function<void(const Departure&)>;

  // Knows who is there when it returns, unless the bus takes longer than `patience`; then, as soon as it answers.
  // Without a session bus, nothing is ever received. There must be a QCoreApplication.
  TerminationWatch(Receiver receiver, std::chrono::microseconds patience);

  // The processes on the bus, as far as is known, that own the name, wait for it or have done so.
  std::vector<int> processesWith(const std::string& name) const { return members_.processesWith(name); }

 private:
  void ask(const char* question, const char* argument, BusConnection::Receiver receiver);
  void takeIn(const std::string& name);
  void ownerChanged(const std::string& name, const std::string& oldOwner, const std::string& newOwner);
  void arrived(const std::string& connection);
  void left(const std::string& connection);
  void askForLine(const std::string& name);
  void lookAgain();

  Receiver receiver_;
  BusMembers members_;
  std::set<std::string> names_;      // all that are owned
  std::set<std::string> newcomers_;  // connections that may still get in line
  int unanswered_ = 0;
  int looksLeft_ = 0;
  QTimer nextLook_;
  BusConnection bus_{MessageBus::session};
};
