// A process that behaves on the session bus as an application does, well or badly.
#pragma once

#include <sys/types.h>

#include <optional>
#include <string>
#include <vector>

#include "tests/support/session_bus.h"

// What an application does when its action is to be activated.
enum class OnActivation { quits, quitsWithoutAnswer, stays, stopsAnswering, declines, forbids };

struct Manners {
  // What it lists through org.gtk.Actions; absent if it does not have that interface.
  std::optional<std::vector<std::string>> actions = std::nullopt;
  // Absent if it does not have org.freedesktop.Application.
  std::optional<OnActivation> onActivation = std::nullopt;
  // It leaves the bus instead of listing its actions, and runs on.
  bool leavesBusWhenAsked = false;
  // SIGTERM is noted and nothing more.
  bool ignoresSignals = false;
  // So many connections own or wait for the name before the one that is the application.
  int plainConnections = 0;
};

// Owns a name on the bus of DBUS_SESSION_BUS_ADDRESS, or waits for it, and serves the object that `path` is.
class BusApplication {
 public:
  BusApplication(const std::string& name, const std::string& path, const Manners& manners);
  ~BusApplication();
  BusApplication(const BusApplication&) = delete;
  BusApplication& operator=(const BusApplication&) = delete;

  pid_t process() const { return process_; }

  // What it has noted until now, signals that were sent to it before included: "List", "activate quit", "SIGTERM",
  // "left the bus". What it was sent on the bus counts once it is answered, or once `isAnswering` was asked after it.
  std::string notes();

  // Whether it answers on the bus.
  bool isAnswering() const;

  // Makes it leave the bus and run on.
  void leaveBus();

  // Makes it hang, and go on.
  void suspend() const;
  void resume() const;

  // Waits until it has ended: "quit", or the name of the signal that ended it; "still running" after half a minute.
  std::string ending();

  // Ends it at once, so that its process is no more.
  void remove();

 private:
  // One more line of its notes; absent once it has ended, or after half a minute.
  std::optional<std::string> nextNote();

  Pipe notes_;
  std::string unread_;
  std::string connection_;
  pid_t process_ = 0;
};
