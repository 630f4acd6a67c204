#include "platform/qt/session_connection.h"

namespace {

QString sessionAddress() {
  const QString address = qEnvironmentVariable("DBUS_SESSION_BUS_ADDRESS");
  const QString folder = qEnvironmentVariable("XDG_RUNTIME_DIR");
  return address.isEmpty() && !folder.isEmpty() ? "unix:path=" + folder + "/bus" : address;
}

QString nextName() {
  static int count = 0;
  return "session" + QString::number(++count);
}

QDBusConnection connect(const QString& name) {
  const QString address = sessionAddress();
  return address.isEmpty() ? QDBusConnection(name) : QDBusConnection::connectToBus(address, name);
}

}  // namespace

SessionConnection::SessionConnection() : name_(nextName()), bus_(connect(name_)) {}

SessionConnection::~SessionConnection() { QDBusConnection::disconnectFromBus(name_); }
