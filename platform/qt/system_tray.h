// Whether the desktop has a tray for status icons.
#pragma once

#include <QDBusConnection>
#include <QDBusServiceWatcher>
#include <QObject>
#include <QTimer>
#include <functional>

#include "platform/linux/session/bus_connection.h"
#include "platform/qt/session_connection.h"

// Qt looks only once which kind of tray there is, when it is first asked for an icon or whether there is a tray, and
// keeps to that. A program that starts with the session may be earlier than its panel, so Qt is not to be asked before
// this knows of a tray. There must be a QGuiApplication.
class SystemTray {
 public:
  SystemTray();
  SystemTray(const SystemTray&) = delete;
  SystemTray& operator=(const SystemTray&) = delete;

  // Whether there is one now: a host of status notifiers on the session bus or, on an X screen, an owner of the tray's
  // selection. A panel that does not answer counts as none after a second.
  bool isThere();

  // Calls `arrived` once, as soon as there is one: when it says so on the session bus, or else within a minute.
  void await(std::function<void()> arrived);

 private:
  void look();

  SessionConnection session_;
  QDBusServiceWatcher services_;
  BusConnection signals_{MessageBus::session};
  QTimer nextLook_;
  QObject receiver_;  // of what the signals post, so that it goes with this
  std::function<void()> arrived_;
};
