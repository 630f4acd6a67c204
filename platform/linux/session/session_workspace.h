// The user's session on Linux: desktop entries, the session bus, and the login manager.
#pragma once

#include <chrono>
#include <memory>
#include <optional>
#include <string>

#include "platform/linux/session/bus_connection.h"
#include "platform/linux/session/event_loop.h"
#include "platform/linux/session/file_manager.h"
#include "platform/workspace.h"

// An application's identifier is its name on the session bus and the name of its desktop entry. Everything happens on
// the thread of the event loop. Without a bus, observers are not called, and there is no error.
class SessionWorkspace : public Workspace {
 public:
  // How long a hung bus may delay the start of an observation.
  static constexpr std::chrono::seconds defaultTimeout{2};

  // Handlers run as work posted to the loop, which must outlive the workspace and its observations. Throws Error if the
  // system creates no timer.
  explicit SessionWorkspace(EventLoop& loop, std::chrono::microseconds timeout = defaultTimeout)
      : loop_(loop), timeout_(timeout), fileManager_(loop) {}

  // Returns the desktop entry's path; see desktop_entries.h.
  std::optional<std::string> locateApplication(const std::string& bundleIdentifier) override;

  // Starts the application of a desktop entry: through the session bus if the entry is DBusActivatable, otherwise as a
  // detached process with the entry's command and Path, or our working folder. Ignores Terminal.
  void openApplication(const std::string& location) override;

  // Both use xdg-open.
  void openAddress(const std::string& address) override;
  void openFolder(const std::string& path) override;

  // Uses the file manager on the session bus, or opens the file's folder if there is none.
  void revealFile(const std::string& path) override;

  // Returns none: on Linux, permissions of files decide.
  std::optional<std::string> fileAccessSettings() override;

  // Returns false: an autostart entry that the user has switched off can still be loaded.
  bool hasSwitchedOff(const std::string& agentFile) override;

  // Reports each process that owned or queued for a name on the session bus, once per name, after it has left the bus.
  // Processes from before the observation count; TerminationWatch describes what may go unnoticed. The process
  // identifier is -1 if the bus did not report it. `terminate` of the application returns false. Throws Error if the
  // system creates no timer.
  Observation observeTerminations(TerminationHandler handler) override;

  // Uses the login manager's signal at the end of a sleep.
  Observation observeWake(std::function<void()> handler) override;

 private:
  EventLoop& loop_;
  std::chrono::microseconds timeout_;
  std::unique_ptr<BusConnection> activation_;  // stays open, because the bus drops the calls of a closed connection
  FileManager fileManager_;
};
