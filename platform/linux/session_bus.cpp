#include "platform/linux/session_bus.h"

#include <systemd/sd-bus.h>

#include <utility>

namespace {

// Greets the bus. Left to itself the library would do so during the first call, and without a time limit.
bool becomesReady(sd_bus* bus, const Deadline& deadline) {
  while (sd_bus_is_ready(bus) == 0) {
    const int progress = sd_bus_process(bus, nullptr);
    if (progress < 0) return false;
    if (progress > 0) continue;
    const std::uint64_t left = deadline.left();
    if (left == 0 || sd_bus_wait(bus, left) < 0) return false;
  }
  return true;
}

// Asks the bus itself something about a name; null if it has no answer.
Message ask(sd_bus* bus, const char* question, const std::string& name, const Deadline& deadline) {
  sd_bus_message* call = nullptr;
  if (sd_bus_message_new_method_call(bus, &call, messageBusName, messageBusPath, messageBusName, question) < 0)
    return nullptr;
  const Message owner(call);
  const std::uint64_t left = deadline.left();
  if (left == 0 || sd_bus_message_append(call, "s", name.c_str()) < 0) return nullptr;
  sd_bus_message* answer = nullptr;
  return Message(sd_bus_call(bus, call, left, nullptr, &answer) < 0 ? nullptr : answer);
}

}  // namespace

std::uint64_t Deadline::left() const {
  const auto left = std::chrono::ceil<std::chrono::microseconds>(end_ - std::chrono::steady_clock::now());
  return left.count() > 0 ? static_cast<std::uint64_t>(left.count()) : 0;
}

void BusClose::operator()(sd_bus* bus) const { sd_bus_close_unref(bus); }

void MessageRelease::operator()(sd_bus_message* message) const { sd_bus_message_unref(message); }

BusHandle openSessionBus(const Deadline& deadline) {
  sd_bus* bus = nullptr;
  if (sd_bus_open_user(&bus) < 0) return nullptr;
  BusHandle connection(bus);
  return becomesReady(bus, deadline) ? std::move(connection) : nullptr;
}

bool isReady(const BusHandle& bus) { return sd_bus_is_ready(bus.get()) > 0; }

std::vector<std::string> connectionsOwning(sd_bus* bus, const std::string& name, const Deadline& deadline) {
  std::vector<std::string> found;
  const Message answer = ask(bus, "ListQueuedOwners", name, deadline);
  if (!answer || sd_bus_message_enter_container(answer.get(), 'a', "s") < 0) return found;
  const char* connection = nullptr;
  while (sd_bus_message_read_basic(answer.get(), 's', &connection) > 0) found.emplace_back(connection);
  return found;
}

std::optional<std::uint32_t> processOf(sd_bus* bus, const std::string& connection, const Deadline& deadline) {
  const Message answer = ask(bus, "GetConnectionUnixProcessID", connection, deadline);
  std::uint32_t identifier = 0;
  if (!answer || sd_bus_message_read_basic(answer.get(), 'u', &identifier) <= 0) return std::nullopt;
  return identifier;
}
