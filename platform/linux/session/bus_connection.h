// A connection to a message bus that an event loop serves.
#pragma once

#include <chrono>
#include <functional>
#include <list>
#include <memory>
#include <string>

#include "platform/linux/session/event_loop.h"
#include "platform/linux/session_bus.h"

enum class MessageBus { session, system };

// A method of an application on the bus.
struct BusMethod {
  std::string application;  // its name on the bus
  std::string path;
  std::string interface;
  std::string name;
};

// Without a bus, or once the bus has gone, every function is a no-op and no handler is called. Only `serveUntil`
// blocks.
//
// Message handlers run inside the library that reads the messages: they must not throw, nest an event loop or destroy
// the connection. They may post work that does.
class BusConnection {
 public:
  // The message is null for a failed call.
  using MessageHandler = std::function<void(sd_bus_message*)>;

  // Appends the arguments of a call. Returns false if that fails.
  using Arguments = std::function<bool(sd_bus_message* call)>;

  // Connects to the session bus (see sessionBusAddress), or to the system bus, which is that of DBUS_SYSTEM_BUS_ADDRESS
  // or the usual one. Starts no bus. The loop must outlive the connection.
  BusConnection(EventLoop& loop, MessageBus bus);
  ~BusConnection() = default;
  BusConnection(const BusConnection&) = delete;
  BusConnection& operator=(const BusConnection&) = delete;

  bool isOpen() const { return bus_ != nullptr; }

  // Calls `handler` for each such signal from now on. The bus subscribes us before it replies to any later call.
  void subscribe(const char* sender, const char* path, const char* interface, const char* signal,
                 MessageHandler handler);

  // Calls a method; the bus starts the application if needed. Calls `handler` once: with the reply, however late, or
  // with null if the call fails, perhaps at once, or if the connection breaks.
  void call(const BusMethod& method, const Arguments& arguments, MessageHandler handler);

  // Calls a method of the bus itself, with one string as the argument or none (null).
  void callBus(const char* method, const char* argument, MessageHandler handler);

  // Calls a method without asking for a reply; the bus starts the application if needed.
  void send(const BusMethod& method, const Arguments& arguments);

  // Serves this connection alone, until `done` returns true or the timeout has passed.
  void serveUntil(const std::function<bool()>& done, std::chrono::microseconds timeout);

 private:
  void serve() noexcept;
  void disconnect();
  void updateWatches();

  EventLoop& loop_;
  std::list<MessageHandler> subscribers_;
  bool isBroken_ = false;
  BusHandle bus_;  // null once it is broken
  int watchedDescriptor_ = -1;
  std::unique_ptr<DescriptorWatch> reader_;  // null without a descriptor, as is `writer_`
  std::unique_ptr<DescriptorWatch> writer_;
};
