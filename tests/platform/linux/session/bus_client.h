// A connection of the test's own process to a bus: an application that comes and goes as the test says.
#pragma once

#include <systemd/sd-bus.h>

#include <memory>
#include <string>

// What it does has happened on the bus when a function returns. A process forked while it lives keeps it on the bus.
class BusClient {
 public:
  // On the session bus, or with its address on another.
  BusClient();
  explicit BusClient(const std::string& address);

  sd_bus* bus() const { return bus_.get(); }
  // Owns the name, or waits for it.
  void take(const char* name);
  // Gives up what `take` took.
  void giveUp(const char* name);

 private:
  struct Closer {
    void operator()(sd_bus* bus) const { sd_bus_flush_close_unref(bus); }
  };
  std::unique_ptr<sd_bus, Closer> bus_;
};
