#include "platform/linux/session/termination_watch.h"

#include <systemd/sd-bus.h>

#include <cstdint>
#include <utility>
#include <vector>

namespace {

bool isUniqueName(const std::string& name) { return name.starts_with(':'); }

std::vector<std::string> strings(sd_bus_message* message) {
  std::vector<std::string> found;
  if (message == nullptr || sd_bus_message_enter_container(message, 'a', "s") < 0) return found;
  const char* text = nullptr;
  while (sd_bus_message_read_basic(message, 's', &text) > 0) found.emplace_back(text);
  return found;
}

}  // namespace

TerminationWatch::TerminationWatch(EventLoop& loop, DepartureHandler handler, std::chrono::microseconds timeout)
    : handler_(std::move(handler)), clock_(loop, CLOCK_MONOTONIC), bus_(loop, MessageBus::session) {
  bus_.subscribe(messageBusName, messageBusPath, messageBusName, "NameOwnerChanged", [this](sd_bus_message* message) {
    const char* name = nullptr;
    const char* oldOwner = nullptr;
    const char* newOwner = nullptr;
    if (sd_bus_message_read(message, "sss", &name, &oldOwner, &newOwner) > 0) ownerChanged(name, oldOwner, newOwner);
  });
  callBus("ListNames", nullptr, [this](sd_bus_message* reply) {
    const std::vector<std::string> names = strings(reply);
    for (const std::string& name : names)
      if (isUniqueName(name)) add(name);
    for (const std::string& name : names)
      if (!isUniqueName(name)) add(name);
  });
  bus_.serveUntil([this] { return unansweredCalls_ == 0; }, timeout);
}

// The bus sends replies and signals in one order, so a reply is never older than what is known.
void TerminationWatch::callBus(const char* method, const char* argument, BusConnection::MessageHandler handler) {
  ++unansweredCalls_;
  bus_.callBus(method, argument, [this, handler = std::move(handler)](sd_bus_message* reply) {
    --unansweredCalls_;
    if (reply != nullptr) handler(reply);
  });
}

void TerminationWatch::add(const std::string& name) {
  if (isUniqueName(name)) {
    members_.arrived(name);
    callBus("GetConnectionUnixProcessID", name.c_str(), [this, name](sd_bus_message* reply) {
      std::uint32_t process = 0;
      if (sd_bus_message_read_basic(reply, 'u', &process) > 0) members_.hasProcess(name, static_cast<int>(process));
    });
  } else {
    names_.insert(name);
    requestQueue(name);
  }
}

void TerminationWatch::ownerChanged(const std::string& name, const std::string& oldOwner, const std::string& newOwner) {
  if (isUniqueName(name)) {
    if (newOwner.empty()) left(name);
    if (oldOwner.empty()) arrived(name);
  } else if (newOwner.empty()) {
    names_.erase(name);
  } else {
    names_.insert(name);
    members_.hasName(newOwner, name);
  }
}

void TerminationWatch::arrived(const std::string& connection) {
  add(connection);
  newcomers_.insert(connection);
  checksLeft_ = queueChecks;
  // An earlier check stays, so that a stream of arrivals cannot postpone it forever.
  const bool isCheckSoon =
      nextCheck_ && nextCheck_->isValid() && nextCheckTime_ - std::chrono::steady_clock::now() <= firstCheckDelay;
  if (!isCheckSoon) checkQueuesAfter(firstCheckDelay);
}

void TerminationWatch::left(const std::string& connection) {
  newcomers_.erase(connection);
  for (const Departure& departure : members_.left(connection)) handler_(departure);
}

// Requests all connections that have the name, not only its owner.
void TerminationWatch::requestQueue(const std::string& name) {
  callBus("ListQueuedOwners", name.c_str(), [this, name](sd_bus_message* reply) {
    for (const std::string& connection : strings(reply)) members_.hasName(connection, name);
  });
}

void TerminationWatch::checkQueuesAfter(std::chrono::milliseconds delay) {
  if (nextCheck_) nextCheck_->invalidate();
  nextCheckTime_ = std::chrono::steady_clock::now() + delay;
  nextCheck_ = clock_.after(delay, [this](Timer&) { checkQueues(); });
}

void TerminationWatch::checkQueues() {
  if (newcomers_.empty() || !bus_.isOpen()) return;
  if (unansweredCalls_ == 0)  // a slow bus gets no further calls
    for (const std::string& name : names_) requestQueue(name);
  --checksLeft_;
  if (checksLeft_ > 0)
    checkQueuesAfter(firstCheckDelay * (1 << (queueChecks - checksLeft_)));
  else
    newcomers_.clear();
}
