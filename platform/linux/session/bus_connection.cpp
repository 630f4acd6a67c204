#include "platform/linux/session/bus_connection.h"

#include <poll.h>
#include <systemd/sd-bus.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <utility>

namespace {

constexpr std::uint64_t noTimeLimit = UINT64_MAX;

Message methodCall(sd_bus* bus, const char* name, const char* path, const char* interface, const char* method) {
  sd_bus_message* call = nullptr;
  return Message(sd_bus_message_new_method_call(bus, &call, name, path, interface, method) < 0 ? nullptr : call);
}

int heard(sd_bus_message* message, void* receiver, sd_bus_error*) noexcept {
  (*static_cast<BusConnection::Receiver*>(receiver))(message);
  return 0;
}

int answered(sd_bus_message* message, void* receiver, sd_bus_error*) noexcept {
  const bool isError = sd_bus_message_is_method_error(message, nullptr) > 0;
  (*static_cast<BusConnection::Receiver*>(receiver))(isError ? nullptr : message);
  return 0;
}

void destroyReceiver(void* receiver) noexcept { delete static_cast<BusConnection::Receiver*>(receiver); }

// The receiver goes with the slot, and the slot once it is answered or the connection is closed.
bool send(sd_bus* bus, sd_bus_message* call, std::unique_ptr<BusConnection::Receiver>& receiver) {
  sd_bus_slot* slot = nullptr;
  if (sd_bus_call_async(bus, &slot, call, answered, receiver.get(), noTimeLimit) < 0) return false;
  sd_bus_slot_set_destroy_callback(slot, destroyReceiver);
  static_cast<void>(receiver.release());
  sd_bus_slot_set_floating(slot, 1);
  sd_bus_slot_unref(slot);
  return true;
}

}  // namespace

BusConnection::BusConnection(MessageBus bus) {
  sd_bus* opened = nullptr;
  if ((bus == MessageBus::session ? sd_bus_open_user(&opened) : sd_bus_open_system(&opened)) < 0) return;
  bus_.reset(opened);
  for (QSocketNotifier* notifier : {&reader_, &writer_})
    QObject::connect(notifier, &QSocketNotifier::activated, notifier, [this]() { serve(); });
  watch();
}

void BusConnection::hear(const char* sender, const char* path, const char* interface, const char* signal,
                         Receiver receiver) {
  if (!isOpen()) return;
  listeners_.push_back(std::move(receiver));
  sd_bus_match_signal_async(bus_.get(), nullptr, sender, path, interface, signal, heard, nullptr, &listeners_.back());
  watch();
}

void BusConnection::ask(const char* question, const char* argument, Receiver receiver) {
  if (!isOpen()) return;
  auto kept = std::make_unique<Receiver>(std::move(receiver));
  const Message call = methodCall(bus_.get(), messageBusName, messageBusPath, messageBusName, question);
  const bool isComplete = call && (argument == nullptr || sd_bus_message_append(call.get(), "s", argument) >= 0);
  if (!isComplete || !send(bus_.get(), call.get(), kept)) (*kept)(nullptr);
  watch();
}

void BusConnection::callWithoutOptions(const std::string& name, const std::string& path, const char* interface,
                                       const char* method) {
  if (!isOpen()) return;
  const Message call = methodCall(bus_.get(), name.c_str(), path.c_str(), interface, method);
  if (!call || sd_bus_message_append(call.get(), "a{sv}", 0) < 0) return;
  sd_bus_message_set_expect_reply(call.get(), 0);
  sd_bus_send(bus_.get(), call.get(), nullptr);
  watch();
}

void BusConnection::serveUntil(const std::function<bool()>& done, std::chrono::microseconds patience) {
  const auto end = std::chrono::steady_clock::now() + patience;
  for (serve(); isOpen() && !done(); serve()) {
    const auto left = std::chrono::ceil<std::chrono::microseconds>(end - std::chrono::steady_clock::now());
    if (left <= std::chrono::microseconds::zero()) return;
    const int waited = sd_bus_wait(bus_.get(), static_cast<std::uint64_t>(left.count()));
    if (waited < 0 && waited != -EINTR) return;
  }
}

// Handles all that has come and sends what can be sent.
void BusConnection::serve() noexcept {
  if (!isOpen()) return;
  int progress = 0;
  do {
    progress = sd_bus_process(bus_.get(), nullptr);
  } while (progress > 0);
  if (progress < 0) bus_.reset();
  watch();
}

// Has the event loop look at the descriptor for as long as there is one, and for what the library wants to know.
void BusConnection::watch() {
  const int descriptor = isOpen() ? sd_bus_get_fd(bus_.get()) : -1;
  const int events = isOpen() ? std::max(sd_bus_get_events(bus_.get()), 0) : 0;
  watch(reader_, descriptor, (events & POLLIN) != 0);
  watch(writer_, descriptor, (events & POLLOUT) != 0);
}

void BusConnection::watch(QSocketNotifier& notifier, int descriptor, bool isWanted) {
  // While it connects, the library may go on to another address and so to another descriptor.
  if (descriptor >= 0 && notifier.socket() != descriptor) notifier.setSocket(descriptor);
  notifier.setEnabled(descriptor >= 0 && isWanted);
}
