// A session bus of a test's own, and processes that own names on it.
#pragma once

#include <sys/types.h>

#include <array>
#include <optional>
#include <string>

#include "tests/platform/linux/scratch_folder.h"

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
  // Waits for at least one byte; empty if the other end was closed instead.
  std::string receive() const;

 private:
  void closeEnd(std::size_t end);

  std::array<int, 2> ends_{-1, -1};
};

// A bus with one application that it could start under Safari's name, if anyone asked it to.
class SessionBus {
 public:
  explicit SessionBus(const ScratchFolder& scratch);
  ~SessionBus() { stop(); }
  SessionBus(const SessionBus&) = delete;
  SessionBus& operator=(const SessionBus&) = delete;

  // Without the identifier that every bus has of its own, so that it holds for a next bus in the same folder, too.
  const std::string& address() const { return address_; }
  pid_t process() const { return process_; }
  void stop();
  // Absent if the kernel does not tell. A process that the bus started either still runs or has left its mark.
  std::optional<bool> hasStartedSomething() const;

 private:
  std::string started_;
  std::string address_;
  pid_t process_ = 0;
};

// A process that owns a name on the bus of DBUS_SESSION_BUS_ADDRESS, or waits for it, with each of its connections,
// until it is told to leave.
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
