// A connection to a message bus that Qt's event loop serves.
#pragma once

#include <QSocketNotifier>
#include <chrono>
#include <functional>
#include <list>
#include <string>

#include "platform/linux/session_bus.h"

enum class MessageBus { session, system };

// Where there is no bus, nothing is ever answered and nothing is heard; the same from the moment on when it goes away.
// Nobody waits for the bus but `serveUntil`.
//
// The receivers of messages run within the library that reads them: they must not throw, nest an event loop, or destroy
// the connection. What may do so is to be posted by them instead.
class BusConnection {
 public:
  // What is done with a message. It is null in place of an answer that is an error.
  using Receiver = std::function<void(sd_bus_message*)>;

  // The bus is that of DBUS_SESSION_BUS_ADDRESS or DBUS_SYSTEM_BUS_ADDRESS, or the usual one of the user or the system.
  // None is started. There must be a QCoreApplication.
  explicit BusConnection(MessageBus bus);
  ~BusConnection() = default;
  BusConnection(const BusConnection&) = delete;
  BusConnection& operator=(const BusConnection&) = delete;

  bool isOpen() const { return bus_ != nullptr; }

  // Hears this signal from now on: before the answer to any later question, even.
  void hear(const char* sender, const char* path, const char* interface, const char* signal, Receiver receiver);

  // Asks the bus itself, with one string as the argument or none (null). However long the answer takes, it is received;
  // at once and as an error if the question cannot be sent.
  void ask(const char* question, const char* argument, Receiver receiver);

  // Calls a method of the application that owns the name, with an empty dictionary of strings and variants, and does
  // not care for an answer. The bus starts the application if it can and must.
  void callWithoutOptions(const std::string& name, const std::string& path, const char* interface, const char* method);

  // Serves this connection alone, until `done` or for as long as patience lasts.
  void serveUntil(const std::function<bool()>& done, std::chrono::microseconds patience);

 private:
  void serve() noexcept;
  void watch();
  static void watch(QSocketNotifier& notifier, int descriptor, bool isWanted);

  std::list<Receiver> listeners_;
  BusHandle bus_;  // null once it broke
  QSocketNotifier reader_{QSocketNotifier::Read};
  QSocketNotifier writer_{QSocketNotifier::Write};
};
