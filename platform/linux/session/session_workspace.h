// The user's session on Linux: desktop entries, the session bus, and the login manager.
#pragma once

#include <chrono>
#include <memory>
#include <optional>
#include <string>

#include "platform/linux/session/bus_connection.h"
#include "platform/linux/session/file_manager.h"
#include "platform/main_loop.h"
#include "platform/workspace.h"

// An application's identifier is its name on the session bus and the name of its desktop entry. There must be a
// QCoreApplication; all is to be called on its thread. What cannot be heard because there is no bus, or no longer, is
// not heard, and nothing complains.
class SessionWorkspace : public Workspace {
 public:
  // How long a hung bus may hold up the start of an observation.
  static constexpr std::chrono::seconds defaultPatience{2};

  // Handlers run as work posted to the loop, which outlives the workspace and its observations.
  explicit SessionWorkspace(MainLoop& mainLoop, std::chrono::microseconds patience = defaultPatience)
      : mainLoop_(mainLoop), patience_(patience) {}

  // The desktop entry's path; see desktop_entries.h.
  std::optional<std::string> locateApplication(const std::string& bundleIdentifier) override;

  // Starts what the desktop entry says: by the session bus if it is DBusActivatable, otherwise its command, as a
  // process that has nothing to do with this one. Its working folder is the entry's Path, or ours. Terminal is ignored.
  void openApplication(const std::string& location) override;

  // By xdg-open.
  void openAddress(const std::string& address) override;
  void openFolder(const std::string& path) override;

  // By the file manager on the session bus; if it is not to be had, the file's folder is opened.
  void revealFile(const std::string& path) override;

  // Tells of each process that owned a name on the session bus or waited for one, once it has left the bus, under each
  // such name; of those, too, that were there before. TerminationWatch says what may go unnoticed. A process that the
  // bus never told of has the identifier -1. Nothing can be asked of the application any more: `terminate` answers
  // false.
  Observation observeTerminations(TerminationHandler handler) override;

  // By the login manager's announcement that a sleep is over.
  Observation observeWake(std::function<void()> handler) override;

 private:
  MainLoop& mainLoop_;
  std::chrono::microseconds patience_;
  std::unique_ptr<BusConnection> activation_;  // kept, because the bus drops a request whose sender has left
  FileManager fileManager_;
};
