#include "platform/linux/session_bus.h"

#include <systemd/sd-bus.h>

#include <cerrno>
#include <system_error>
#include <utility>

#include "platform/error.h"
#include "platform/linux/session_bus_address.h"

namespace {

Error unanswered(int problem) {
  return {"SessionBus", -problem,
          "The session bus couldn’t be asked: " + std::generic_category().message(-problem) + " (" +
              sessionBusAddress().value_or("no address") + ")."};
}

// Completes the handshake with the bus. The library would otherwise do so in the first call, without a timeout. Returns
// a negative error number on failure.
int becomeReady(sd_bus* bus, const Deadline& deadline) {
  while (sd_bus_is_ready(bus) == 0) {
    const int progress = sd_bus_process(bus, nullptr);
    if (progress < 0) return progress;
    if (progress > 0) continue;
    const std::uint64_t remaining = deadline.left();
    if (remaining == 0) return -ETIMEDOUT;
    if (const int waited = sd_bus_wait(bus, remaining); waited < 0 && waited != -EINTR) return waited;
  }
  return 0;
}

// Calls a method of the bus itself about a name. Returns null if the bus replies that there is no such name.
Message callBus(sd_bus* bus, const char* method, const std::string& name, const Deadline& deadline) {
  sd_bus_message* call = nullptr;
  int result = sd_bus_message_new_method_call(bus, &call, messageBusName, messageBusPath, messageBusName, method);
  const Message owner(call);
  if (result >= 0) result = sd_bus_message_append(call, "s", name.c_str());
  const std::uint64_t remaining = deadline.left();
  if (result >= 0 && remaining == 0) result = -ETIMEDOUT;
  sd_bus_message* reply = nullptr;
  sd_bus_error error{};
  if (result >= 0) result = sd_bus_call(bus, call, remaining, &error, &reply);
  const bool isUnknownName = sd_bus_error_has_name(&error, SD_BUS_ERROR_NAME_HAS_NO_OWNER) > 0 ||
                             sd_bus_error_has_name(&error, SD_BUS_ERROR_INVALID_ARGS) > 0;
  sd_bus_error_free(&error);
  if (result < 0 && !isUnknownName) throw unanswered(result);
  return Message(reply);
}

}  // namespace

std::uint64_t Deadline::left() const {
  const auto left = std::chrono::ceil<std::chrono::microseconds>(end_ - std::chrono::steady_clock::now());
  return left.count() > 0 ? static_cast<std::uint64_t>(left.count()) : 0;
}

void BusClose::operator()(sd_bus* bus) const { sd_bus_close_unref(bus); }

void MessageRelease::operator()(sd_bus_message* message) const { sd_bus_message_unref(message); }

int startSessionBus(BusHandle& bus) {
  bus = nullptr;
  const std::optional<std::string> address = sessionBusAddress();
  if (!address) return -ENOENT;
  sd_bus* created = nullptr;
  int result = sd_bus_new(&created);
  BusHandle connection(created);
  if (result >= 0) result = sd_bus_set_address(created, address->c_str());
  if (result >= 0) result = sd_bus_set_bus_client(created, 1);
  if (result >= 0) result = sd_bus_start(created);
  if (result >= 0) bus = std::move(connection);
  return result;
}

BusHandle openSessionBus(const Deadline& deadline) {
  BusHandle bus;
  int result = startSessionBus(bus);
  if (result >= 0) result = becomeReady(bus.get(), deadline);
  if (result == -ENOENT || result == -ECONNREFUSED) return nullptr;
  if (result < 0) throw unanswered(result);
  return bus;
}

bool isReady(const BusHandle& bus) { return sd_bus_is_ready(bus.get()) > 0; }

std::vector<std::string> connectionsOwning(sd_bus* bus, const std::string& name, const Deadline& deadline) {
  std::vector<std::string> found;
  const Message reply = callBus(bus, "ListQueuedOwners", name, deadline);
  if (!reply) return found;
  if (sd_bus_message_enter_container(reply.get(), 'a', "s") <= 0) throw unanswered(-EBADMSG);
  const char* connection = nullptr;
  while (sd_bus_message_read_basic(reply.get(), 's', &connection) > 0) found.emplace_back(connection);
  return found;
}

std::optional<std::uint32_t> processOf(sd_bus* bus, const std::string& connection, const Deadline& deadline) {
  const Message reply = callBus(bus, "GetConnectionUnixProcessID", connection, deadline);
  if (!reply) return std::nullopt;
  std::uint32_t identifier = 0;
  if (sd_bus_message_read_basic(reply.get(), 'u', &identifier) <= 0) throw unanswered(-EBADMSG);
  return identifier;
}
