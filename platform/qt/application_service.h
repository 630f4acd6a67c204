// The application's name and interface on the session bus.
#pragma once

#include <QDBusVirtualObject>
#include <functional>
#include <string>

#include "platform/qt/session_connection.h"

struct ApplicationRequests {
  std::function<void()> reopen;  // the user opened the running application again
  std::function<void()> quit;
};

enum class Instance {
  first,   // no other process has the name
  second,  // another process has it
  unknown  // there is no session bus
};

// Owns the name as long as it lives, unless another process has it, and implements org.freedesktop.Application at the
// name's object path. Replies to a request at once, and posts the request to the loop. A QCoreApplication must exist.
class ApplicationService : private QDBusVirtualObject {
 public:
  ApplicationService(const std::string& name, ApplicationRequests requests);
  ~ApplicationService() override;
  ApplicationService(const ApplicationService&) = delete;
  ApplicationService& operator=(const ApplicationService&) = delete;

  Instance instance() const { return instance_; }

  // Opens the first instance again, as its launcher does, and waits two seconds for its reply. Returns false if there
  // is none.
  bool openFirst();

 private:
  QString introspect(const QString& path) const override;
  bool handleMessage(const QDBusMessage& message, const QDBusConnection& connection) override;
  std::function<void()> requestOf(const QDBusMessage& message) const;

  QString name_;
  ApplicationRequests requests_;
  SessionConnection session_;
  Instance instance_ = Instance::unknown;
};
