#include "tests/support/virtual_workspace.h"

#include <utility>

namespace {

// Calls the handlers whose observation still exists. Takes a copy, because a handler may add another one.
template <class Handler, class... Arguments>
void call(std::vector<std::weak_ptr<Handler>> handlers, const Arguments&... arguments) {
  for (const auto& handler : handlers)
    if (const auto observed = handler.lock()) (*observed)(arguments...);
}

}  // namespace

VirtualWorkspace::VirtualWorkspace(Journal& journal, VirtualMainLoop& loop, VirtualRunningApplications& applications)
    : journal_(journal), loop_(loop), applications_(applications) {
  applications_.whenTerminated([this](const auto& application) { notifyTermination(application); });
}

std::optional<std::string> VirtualWorkspace::locateApplication(const std::string& bundleIdentifier) {
  return journal_.perform("locate", bundleIdentifier, [&] {
    const auto found = installed_.find(bundleIdentifier);
    return found == installed_.end() ? std::nullopt : std::optional(found->second);
  });
}

void VirtualWorkspace::openApplication(const std::string& location) {
  journal_.perform("open", location, [&] {
    for (const auto& [identifier, place] : installed_)
      if (place == location && opens_ && applications_.count(identifier) == 0)
        applications_.start(identifier, behavior_);
  });
}

void VirtualWorkspace::openAddress(const std::string& address) {
  journal_.perform("address", address, [] {});
}

void VirtualWorkspace::openFolder(const std::string& path) {
  journal_.perform("folder", path, [] {});
}

void VirtualWorkspace::revealFile(const std::string& path) {
  journal_.perform("reveal", path, [] {});
}

bool VirtualWorkspace::hasSwitchedOff(const std::string& agentFile) { return switchedOff_ == agentFile; }

Observation VirtualWorkspace::observeTerminations(TerminationHandler handler) {
  return journal_.perform("observe terminations", {}, [&]() -> Observation {
    const auto kept = std::make_shared<TerminationHandler>(std::move(handler));
    terminationHandlers_.emplace_back(kept);
    return kept;
  });
}

Observation VirtualWorkspace::observeWake(std::function<void()> handler) {
  return journal_.perform("observe wake", {}, [&]() -> Observation {
    const auto kept = std::make_shared<std::function<void()>>(std::move(handler));
    wakeHandlers_.emplace_back(kept);
    return kept;
  });
}

void VirtualWorkspace::notifyTermination(const std::shared_ptr<RunningApplication>& application) {
  const std::string what = "termination of " + std::to_string(application ? application->processIdentifier() : 0);
  const auto notify = [this, application] { call(terminationHandlers_, application); };
  const auto deliver = [this, notify, what] { loop_.deliver(notify, VirtualMainLoop::Place::back, what); };
  if (notificationDelay_ == VirtualMainLoop::Duration::zero()) return deliver();
  loop_.elsewhere(notificationDelay_, deliver, "news of the " + what);
}

void VirtualWorkspace::wake(VirtualMainLoop::Place place) {
  loop_.deliver([this] { call(wakeHandlers_); }, place, "wake");
}
