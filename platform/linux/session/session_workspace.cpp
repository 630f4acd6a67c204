#include "platform/linux/session/session_workspace.h"

#include <systemd/sd-bus.h>

#include <filesystem>
#include <utility>

#include "platform/linux/session/desktop_entries.h"
#include "platform/linux/session/desktop_entry.h"
#include "platform/linux/session/exec_line.h"
#include "platform/linux/session/termination_watch.h"
#include "platform/linux/detached_process.h"
#include "platform/linux/object_path.h"

namespace {

constexpr const char* loginManagerName = "org.freedesktop.login1";
constexpr const char* loginManagerPath = "/org/freedesktop/login1";
constexpr const char* loginManagerInterface = "org.freedesktop.login1.Manager";
constexpr const char* applicationInterface = "org.freedesktop.Application";

class TerminatedApplication : public RunningApplication {
 public:
  explicit TerminatedApplication(Departure departure) : departure_(std::move(departure)) {}
  int processIdentifier() const override { return departure_.process; }
  std::optional<std::string> bundleIdentifier() const override { return departure_.name; }
  bool terminate() override { return false; }

 private:
  Departure departure_;
};

// Held by nobody but the observer, and by the work that is calling the handler.
struct TerminationObservation {
  TerminationHandler handler;
  std::unique_ptr<TerminationWatch> watch;
};

struct WakeObservation {
  std::function<void()> handler;
  BusConnection bus{MessageBus::system};
};

bool isEndOfSleep(sd_bus_message* prepareForSleep) {
  int isAboutToSleep = 1;
  return sd_bus_message_read_basic(prepareForSleep, 'b', &isAboutToSleep) > 0 && isAboutToSleep == 0;
}

}  // namespace

std::optional<std::string> SessionWorkspace::locateApplication(const std::string& bundleIdentifier) {
  return findDesktopEntry(bundleIdentifier);
}

void SessionWorkspace::openApplication(const std::string& location) {
  const std::optional<DesktopEntry> entry = DesktopEntry::read(location);
  if (!entry) return;
  if (entry->isTrue("DBusActivatable")) {
    if (!activation_ || !activation_->isOpen()) activation_ = std::make_unique<BusConnection>(MessageBus::session);
    const std::string name = std::filesystem::path(location).stem();
    activation_->callWithoutOptions(name, objectPath(name), applicationInterface, "Activate");
  } else if (const auto command = commandOf(*entry, location)) {
    startDetached(*command, entry->text("Path").value_or(""));
  }
}

void SessionWorkspace::openAddress(const std::string& address) { openWithDesktop(address); }

void SessionWorkspace::openFolder(const std::string& path) { openWithDesktop(path); }

void SessionWorkspace::revealFile(const std::string& path) { fileManager_.reveal(path); }

Observation SessionWorkspace::observeTerminations(TerminationHandler handler) {
  const auto observation = std::make_shared<TerminationObservation>();
  observation->handler = std::move(handler);
  const auto tell = [&mainLoop = mainLoop_, observer = std::weak_ptr(observation)](const Departure& departure) {
    mainLoop.post([observer, departure] {
      if (const auto present = observer.lock()) present->handler(std::make_shared<TerminatedApplication>(departure));
    });
  };
  observation->watch = std::make_unique<TerminationWatch>(tell, patience_);
  return observation;
}

Observation SessionWorkspace::observeWake(std::function<void()> handler) {
  const auto observation = std::make_shared<WakeObservation>();
  observation->handler = std::move(handler);
  const auto tell = [&mainLoop = mainLoop_, observer = std::weak_ptr(observation)](sd_bus_message* message) {
    if (!isEndOfSleep(message)) return;
    mainLoop.post([observer] {
      if (const auto present = observer.lock()) present->handler();
    });
  };
  observation->bus.hear(loginManagerName, loginManagerPath, loginManagerInterface, "PrepareForSleep", tell);
  // Once the bus answers this, it has heard the above.
  const auto isHeard = std::make_shared<bool>(false);
  observation->bus.ask("GetId", nullptr, [isHeard](sd_bus_message*) { *isHeard = true; });
  observation->bus.serveUntil([&] { return *isHeard; }, patience_);
  return observation;
}
