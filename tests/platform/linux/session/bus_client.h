// A connection of the test's process to a bus, which stands for an application.
#pragma once

#include <systemd/sd-bus.h>

#include <memory>
#include <string>

// Each function returns after the bus has acted. A process forked while this lives keeps the connection open.
class BusClient {
 public:
  // Connects to the session bus, or to the bus with this address.
  BusClient();
  explicit BusClient(const std::string& address);

  sd_bus* bus() const { return bus_.get(); }
  // Takes the name, or queues for it.
  void take(const char* name);
  // Releases the name, or leaves its queue.
  void release(const char* name);

 private:
  struct Closer {
    void operator()(sd_bus* bus) const { sd_bus_flush_close_unref(bus); }
  };
  std::unique_ptr<sd_bus, Closer> bus_;
};
