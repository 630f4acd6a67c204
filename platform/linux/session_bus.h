// The session bus, its names and its connections.
#pragma once

#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

struct sd_bus;
struct sd_bus_message;

// The bus's own name, which is also the name of its interface, and its object path.
inline constexpr const char* messageBusName = "org.freedesktop.DBus";
inline constexpr const char* messageBusPath = "/org/freedesktop/DBus";

// The end of a timeout that starts with the construction and that several calls share.
class Deadline {
 public:
  explicit Deadline(std::chrono::microseconds timeout) : end_(std::chrono::steady_clock::now() + timeout) {}

  // Returns the remaining time in microseconds; 0 if it has passed.
  std::uint64_t left() const;

 private:
  std::chrono::steady_clock::time_point end_;
};

struct BusClose {
  void operator()(sd_bus* bus) const;
};
using BusHandle = std::unique_ptr<sd_bus, BusClose>;

struct MessageRelease {
  void operator()(sd_bus_message* message) const;
};
using Message = std::unique_ptr<sd_bus_message, MessageRelease>;

// Returns a new connection to the session bus of the environment; null if there is none or it does not reply before the
// deadline. Never starts a bus.
BusHandle openSessionBus(const Deadline& deadline);

// Returns true if `bus` is an open connection.
bool isReady(const BusHandle& bus);

// Returns the unique names of the connections that own a name or are queued for it, in the order of the queue; none if
// the bus does not reply before the deadline.
std::vector<std::string> connectionsOwning(sd_bus* bus, const std::string& name, const Deadline& deadline);

// Returns the ID of the process that opened a connection; absent if the connection does not exist (any more) or the bus
// does not reply before the deadline.
std::optional<std::uint32_t> processOf(sd_bus* bus, const std::string& connection, const Deadline& deadline);
