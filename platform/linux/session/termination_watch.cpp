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

TerminationWatch::TerminationWatch(Receiver receiver, std::chrono::microseconds patience)
    : receiver_(std::move(receiver)) {
  nextLook_.setSingleShot(true);
  QObject::connect(&nextLook_, &QTimer::timeout, &nextLook_, [this]() noexcept { lookAgain(); });
  bus_.hear(messageBusName, messageBusPath, messageBusName, "NameOwnerChanged", [this](sd_bus_message* message) {
    const char* name = nullptr;
    const char* oldOwner = nullptr;
    const char* newOwner = nullptr;
    if (sd_bus_message_read(message, "sss", &name, &oldOwner, &newOwner) > 0) ownerChanged(name, oldOwner, newOwner);
  });
  ask("ListNames", nullptr, [this](sd_bus_message* answer) {
    const std::vector<std::string> names = strings(answer);
    for (const std::string& name : names)
      if (isUniqueName(name)) takeIn(name);
    for (const std::string& name : names)
      if (!isUniqueName(name)) takeIn(name);
  });
  bus_.serveUntil([this] { return unanswered_ == 0; }, patience);
}

// Answers arrive in the order of the bus's news, so they are never older than what is known.
void TerminationWatch::ask(const char* question, const char* argument, BusConnection::Receiver receiver) {
  ++unanswered_;
  bus_.ask(question, argument, [this, receiver = std::move(receiver)](sd_bus_message* answer) {
    --unanswered_;
    if (answer != nullptr) receiver(answer);
  });
}

void TerminationWatch::takeIn(const std::string& name) {
  if (isUniqueName(name)) {
    members_.arrived(name);
    ask("GetConnectionUnixProcessID", name.c_str(), [this, name](sd_bus_message* answer) {
      std::uint32_t process = 0;
      if (sd_bus_message_read_basic(answer, 'u', &process) > 0) members_.hasProcess(name, static_cast<int>(process));
    });
  } else {
    names_.insert(name);
    askForLine(name);
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
  takeIn(connection);
  newcomers_.insert(connection);
  looksLeft_ = looks;
  // A look that is due sooner stays, so that a crowd of arrivals does not put it off for ever.
  if (!nextLook_.isActive() || nextLook_.remainingTimeAsDuration() > firstLook) nextLook_.start(firstLook);
}

void TerminationWatch::left(const std::string& connection) {
  newcomers_.erase(connection);
  for (const Departure& departure : members_.left(connection)) receiver_(departure);
}

// All that have the name, not only the one that owns it.
void TerminationWatch::askForLine(const std::string& name) {
  ask("ListQueuedOwners", name.c_str(), [this, name](sd_bus_message* answer) {
    for (const std::string& connection : strings(answer)) members_.hasName(connection, name);
  });
}

void TerminationWatch::lookAgain() {
  if (newcomers_.empty() || !bus_.isOpen()) return;
  if (unanswered_ == 0)  // a bus that takes its time is not asked faster
    for (const std::string& name : names_) askForLine(name);
  --looksLeft_;
  if (looksLeft_ > 0)
    nextLook_.start(firstLook * (1 << (looks - looksLeft_)));
  else
    newcomers_.clear();
}
