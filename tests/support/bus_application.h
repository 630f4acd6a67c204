// A process that behaves like an application on the session bus, correctly or not.
#pragma once

#include <sys/types.h>

#include <optional>
#include <string>
#include <vector>

#include "tests/support/session_bus.h"

// What an application does when a caller activates its quit action.
enum class OnActivation { quits, quitsWithoutAnswer, stays, stopsAnswering, declines, forbids };

struct Manners {
  // The actions that it lists through org.gtk.Actions; absent if it lacks that interface.
  std::optional<std::vector<std::string>> actions = std::nullopt;
  // Absent if it lacks org.freedesktop.Application.
  std::optional<OnActivation> onActivation = std::nullopt;
  // Leaves the bus instead of listing its actions, and keeps running.
  bool leavesBusWhenAsked = false;
  // Only notes a SIGTERM.
  bool ignoresSignals = false;
  // How many connections of the process own or wait for the name before the application's own connection does.
  int plainConnections = 0;
};

// Owns a name on the bus of DBUS_SESSION_BUS_ADDRESS, or queues for it, and serves the object at `path`.
class BusApplication {
 public:
  BusApplication(const std::string& name, const std::string& path, const Manners& manners);
  ~BusApplication();
  BusApplication(const BusApplication&) = delete;
  BusApplication& operator=(const BusApplication&) = delete;

  pid_t process() const { return process_; }

  // Returns the notes so far: "List", "activate quit", "SIGTERM", "left the bus". They include every signal sent before
  // this call, and every message that was answered, or that was sent before a call of isAnswering().
  std::string notes();

  // True if it replies on the bus.
  bool isAnswering() const;

  // Makes it leave the bus but keep running.
  void leaveBus();

  // Stops and continues the process.
  void suspend() const;
  void resume() const;

  // Waits up to 30 s for its end. Returns "quit", the name of the signal that ended it, or "still running".
  std::string ending();

  // Kills the process and reaps it.
  void remove();

 private:
  // The next line of its notes; absent if it has ended or after 30 s.
  std::optional<std::string> nextNote();

  Pipe notes_;
  std::string unread_;
  std::string connection_;
  pid_t process_ = 0;
};
