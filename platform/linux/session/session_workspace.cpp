#include "platform/linux/session/session_workspace.h"

#include <systemd/sd-bus.h>

#include <filesystem>
#include <utility>

#include "platform/linux/detached_process.h"
#include "platform/linux/object_path.h"
#include "platform/linux/session/desktop_entries.h"
#include "platform/linux/session/desktop_entry.h"
#include "platform/linux/session/exec_line.h"
#include "platform/linux/session/termination_watch.h"
#include "platform/posix/existing_folder.h"

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

// Owned by the observer, and by the work that is calling the handler.
struct TerminationObservation {
  TerminationHandler handler;
  std::unique_ptr<TerminationWatch> watch;
};

struct WakeObservation {
  WakeObservation(EventLoop& loop, std::function<void()> woken)
      : handler(std::move(woken)), bus(loop, MessageBus::system) {}

  std::function<void()> handler;
  BusConnection bus;
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
    if (!activation_ || !activation_->isOpen())
      activation_ = std::make_unique<BusConnection>(loop_, MessageBus::session);
    const std::string name = std::filesystem::path(location).stem();
    const auto appendNoOptions = [](sd_bus_message* call) { return sd_bus_message_append(call, "a{sv}", 0) >= 0; };
    activation_->send({name, objectPath(name), applicationInterface, "Activate"}, appendNoOptions);
  } else if (const auto command = commandOf(*entry, location)) {
    startDetached(*command, entry->text("Path").value_or(""));
  }
}

void SessionWorkspace::openAddress(const std::string& address) { openWithDesktop(address); }

void SessionWorkspace::openFolder(const std::string& path) { openWithDesktop(existingFolder(path)); }

void SessionWorkspace::revealFile(const std::string& path) { fileManager_.reveal(path); }

std::optional<std::string> SessionWorkspace::fileAccessSettings() { return std::nullopt; }

bool SessionWorkspace::hasSwitchedOff(const std::string& /*agentFile*/) { return false; }

Observation SessionWorkspace::observeTerminations(TerminationHandler handler) {
  const auto observation = std::make_shared<TerminationObservation>();
  observation->handler = std::move(handler);
  const auto report = [&loop = loop_, observer = std::weak_ptr(observation)](const Departure& departure) {
    loop.post([observer, departure] {
      if (const auto present = observer.lock()) present->handler(std::make_shared<TerminatedApplication>(departure));
    });
  };
  observation->watch = std::make_unique<TerminationWatch>(loop_, report, timeout_);
  return observation;
}

Observation SessionWorkspace::observeWake(std::function<void()> handler) {
  const auto observation = std::make_shared<WakeObservation>(loop_, std::move(handler));
  const auto report = [&loop = loop_, observer = std::weak_ptr(observation)](sd_bus_message* message) {
    if (!isEndOfSleep(message)) return;
    loop.post([observer] {
      if (const auto present = observer.lock()) present->handler();
    });
  };
  observation->bus.subscribe(loginManagerName, loginManagerPath, loginManagerInterface, "PrepareForSleep", report);
  // Once the bus has replied to a later call, the subscription is in force.
  const auto hasReplied = std::make_shared<bool>(false);
  observation->bus.callBus("GetId", nullptr, [hasReplied](sd_bus_message*) { *hasReplied = true; });
  observation->bus.serveUntil([&] { return *hasReplied; }, timeout_);
  return observation;
}
