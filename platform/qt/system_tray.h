// Detects the system tray of the desktop.
#pragma once

#include <QDBusServiceWatcher>
#include <QObject>
#include <QTimer>
#include <functional>

#include "platform/linux/session/bus_connection.h"
#include "platform/linux/session/event_loop.h"
#include "platform/qt/session_connection.h"

// Qt determines the kind of tray only once, when its tray icon is first used. A program that starts with the session
// may start before the panel, so use Qt's tray icon only after this has found a tray. A QGuiApplication must exist.
class SystemTray {
 public:
  // The loop must outlive it.
  explicit SystemTray(EventLoop& loop);
  SystemTray(const SystemTray&) = delete;
  SystemTray& operator=(const SystemTray&) = delete;

  // Returns true if there is a tray now: a status notifier host on the session bus or, on X11, an owner of the tray's
  // selection. A panel that does not reply within a second does not count.
  bool isAvailable();

  // Calls `arrived` once when there is a tray: when the tray announces itself on the session bus, else within a minute.
  void await(std::function<void()> arrived);

 private:
  void check();

  SessionConnection session_;
  QDBusServiceWatcher services_;
  BusConnection signals_;
  QTimer nextCheck_;
  QObject receiver_;  // owns posted checks
  std::function<void()> arrived_;
};
