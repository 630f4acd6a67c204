#include "platform/qt/session_connection.h"

#include <optional>
#include <string>

#include "platform/linux/session_bus_address.h"

namespace {

QString nextName() {
  static int count = 0;
  return "session" + QString::number(++count);
}

QDBusConnection connect(const QString& name) {
  const std::optional<std::string> address = sessionBusAddress();
  return address ? QDBusConnection::connectToBus(QString::fromStdString(*address), name) : QDBusConnection(name);
}

}  // namespace

SessionConnection::SessionConnection() : name_(nextName()), bus_(connect(name_)) {}

SessionConnection::~SessionConnection() { QDBusConnection::disconnectFromBus(name_); }
