#include "platform/linux/session_bus.h"

#include <systemd/sd-bus.h>

#include <utility>

namespace {

// Completes the handshake with the bus. The library would otherwise do so in the first call, without a timeout.
bool becomesReady(sd_bus* bus, const Deadline& deadline) {
  while (sd_bus_is_ready(bus) == 0) {
    const int progress = sd_bus_process(bus, nullptr);
    if (progress < 0) return false;
    if (progress > 0) continue;
    const std::uint64_t remaining = deadline.left();
    if (remaining == 0 || sd_bus_wait(bus, remaining) < 0) return false;
  }
  return true;
}

// Calls a method of the bus itself about a name. Returns null if there is no reply.
Message callBus(sd_bus* bus, const char* method, const std::string& name, const Deadline& deadline) {
  sd_bus_message* call = nullptr;
  if (sd_bus_message_new_method_call(bus, &call, messageBusName, messageBusPath, messageBusName, method) < 0)
    return nullptr;
  const Message owner(call);
  const std::uint64_t remaining = deadline.left();
  if (remaining == 0 || sd_bus_message_append(call, "s", name.c_str()) < 0) return nullptr;
  sd_bus_message* reply = nullptr;
  return Message(sd_bus_call(bus, call, remaining, nullptr, &reply) < 0 ? nullptr : reply);
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
  const Message reply = callBus(bus, "ListQueuedOwners", name, deadline);
  if (!reply || sd_bus_message_enter_container(reply.get(), 'a', "s") < 0) return found;
  const char* connection = nullptr;
  while (sd_bus_message_read_basic(reply.get(), 's', &connection) > 0) found.emplace_back(connection);
  return found;
}

std::optional<std::uint32_t> processOf(sd_bus* bus, const std::string& connection, const Deadline& deadline) {
  const Message reply = callBus(bus, "GetConnectionUnixProcessID", connection, deadline);
  std::uint32_t identifier = 0;
  if (!reply || sd_bus_message_read_basic(reply.get(), 'u', &identifier) <= 0) return std::nullopt;
  return identifier;
}
