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

// Starts to connect to the session bus (see sessionBusAddress), and never starts a bus. Returns a negative error number
// if that fails at once, and `bus` is null then: -ENOENT or -ECONNREFUSED if there is no bus.
int startSessionBus(BusHandle& bus);

// Returns a new connection to the session bus; null if there is none, because no address is known or nobody listens
// there. Throws Error if the bus does not accept the connection before the deadline. Never starts a bus.
BusHandle openSessionBus(const Deadline& deadline);

// Returns true if `bus` is an open connection.
bool isReady(const BusHandle& bus);

// Returns the unique names of the connections that own a name or are queued for it, in the order of the queue; none for
// a name that is not valid. Throws Error if the bus does not reply before the deadline.
std::vector<std::string> connectionsOwning(sd_bus* bus, const std::string& name, const Deadline& deadline);

// Returns the ID of the process that opened a connection; absent if the connection does not exist (any more). Throws
// Error if the bus does not know the process, or does not reply before the deadline.
std::optional<std::uint32_t> processOf(sd_bus* bus, const std::string& connection, const Deadline& deadline);
