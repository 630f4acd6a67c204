// A private session bus, and processes that own names on it.
#pragma once

#include <sys/types.h>

#include <array>
#include <optional>
#include <string>

#include "tests/support/scratch_folder.h"

class Pipe {
 public:
  Pipe();
  ~Pipe();
  Pipe(const Pipe&) = delete;
  Pipe& operator=(const Pipe&) = delete;

  int reader() const { return ends_[0]; }
  int writer() const { return ends_[1]; }
  void closeReader() { closeEnd(0); }
  void closeWriter() { closeEnd(1); }
  // Waits for at least one byte. Returns an empty string if the other end is closed.
  std::string receive() const;

 private:
  void closeEnd(std::size_t end);

  std::array<int, 2> ends_{-1, -1};
};

// A bus that can activate one application, under Safari's name.
class SessionBus {
 public:
  explicit SessionBus(const ScratchFolder& scratch);
  ~SessionBus() { stop(); }
  SessionBus(const SessionBus&) = delete;
  SessionBus& operator=(const SessionBus&) = delete;

  // Without the bus's unique identifier, so that the address also fits the next bus in the same folder.
  const std::string& address() const { return address_; }
  pid_t process() const { return process_; }
  void stop();
  // True if the bus has activated the application, which either still runs or has created its file. Absent if the
  // kernel does not list the bus's children.
  std::optional<bool> hasStartedSomething() const;

 private:
  std::string started_;
  std::string address_;
  pid_t process_ = 0;
};

// A process that owns a name on the bus of DBUS_SESSION_BUS_ADDRESS, or queues for it, with each of its connections,
// until leave() kills it.
class NameOwner {
 public:
  explicit NameOwner(const char* name, int connections = 1);
  ~NameOwner() { leave(); }
  NameOwner(const NameOwner&) = delete;
  NameOwner& operator=(const NameOwner&) = delete;

  pid_t process() const { return process_; }
  void leave();

 private:
  pid_t process_ = 0;
};
