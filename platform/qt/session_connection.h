// A connection to the session bus by Qt's library, for what is exported there and watched.
#pragma once

#include <QDBusConnection>
#include <QString>

// The bus is that of DBUS_SESSION_BUS_ADDRESS, or the one in the user's runtime folder; none is started. Qt's own
// connection for the session would start one, and keeps to what that variable was when it was first used. There must
// be a QCoreApplication.
class SessionConnection {
 public:
  SessionConnection();
  ~SessionConnection();
  SessionConnection(const SessionConnection&) = delete;
  SessionConnection& operator=(const SessionConnection&) = delete;

  // One that is not connected where there is no bus.
  QDBusConnection& bus() { return bus_; }

 private:
  QString name_;
  QDBusConnection bus_;
};
