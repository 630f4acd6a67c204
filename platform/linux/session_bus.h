// The session bus, and what it says about the names and connections on it.
#pragma once

#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

struct sd_bus;
struct sd_bus_message;

// What a bus itself answers to; its interface has the name, too.
inline constexpr const char* messageBusName = "org.freedesktop.DBus";
inline constexpr const char* messageBusPath = "/org/freedesktop/DBus";

class Deadline {
 public:
  explicit Deadline(std::chrono::microseconds patience) : end_(std::chrono::steady_clock::now() + patience) {}

  // What is left in microseconds, 0 if it has passed.
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

// A new connection to the bus of the environment; null if there is none that answers in time. Starts no bus.
BusHandle openSessionBus(const Deadline& deadline);

// Whether a connection is there and still holds.
bool isReady(const BusHandle& bus);

// The unique names of the connections that own a name or wait for it, in the order of the line; none if the bus does
// not answer in time.
std::vector<std::string> connectionsOwning(sd_bus* bus, const std::string& name, const Deadline& deadline);

// The process of a connection, as the bus saw it when the connection was made. Absent if there is no such connection,
// or not any more, or if the bus does not answer in time.
std::optional<std::uint32_t> processOf(sd_bus* bus, const std::string& connection, const Deadline& deadline);
