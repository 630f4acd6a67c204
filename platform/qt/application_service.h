// The application as its user's session sees it: a name on the session bus, and what can be asked of it there.
#pragma once

#include <QDBusVirtualObject>
#include <functional>
#include <string>

#include "platform/qt/session_connection.h"

struct ApplicationRequests {
  std::function<void()> reopen;  // the application was opened though it runs
  std::function<void()> quit;
};

// Owns the name for as long as it lives, or waits for it where another process has it, and has the interface
// org.freedesktop.Application at the name's object path. A request is answered at once and made by the loop after that.
// Without a session bus there is nothing of all that. There must be a QCoreApplication.
class ApplicationService : private QDBusVirtualObject {
 public:
  ApplicationService(const std::string& name, ApplicationRequests requests);
  ~ApplicationService() override;
  ApplicationService(const ApplicationService&) = delete;
  ApplicationService& operator=(const ApplicationService&) = delete;

 private:
  QString introspect(const QString& path) const override;
  bool handleMessage(const QDBusMessage& message, const QDBusConnection& connection) override;
  std::function<void()> requestOf(const QDBusMessage& message) const;

  QString name_;
  ApplicationRequests requests_;
  SessionConnection session_;
};
