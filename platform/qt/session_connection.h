// Qt's connection to the session bus, for exported objects and watched names.
#pragma once

#include <QDBusConnection>
#include <QString>

// Connects to the session bus (see sessionBusAddress), and starts no bus.
// QDBusConnection::sessionBus() would start one, and would keep the value that the variable had at first use. A
// QCoreApplication must exist.
class SessionConnection {
 public:
  SessionConnection();
  ~SessionConnection();
  SessionConnection(const SessionConnection&) = delete;
  SessionConnection& operator=(const SessionConnection&) = delete;

  // Not connected if there is no bus.
  QDBusConnection& bus() { return bus_; }

 private:
  QString name_;
  QDBusConnection bus_;
};
