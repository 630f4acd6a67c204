#include "platform/linux/session/bus_connection.h"

#include <poll.h>
#include <systemd/sd-bus.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <utility>

namespace {

constexpr std::uint64_t noTimeout = UINT64_MAX;

// Null if the method's names are not valid or the arguments do not fit.
Message methodCall(sd_bus* bus, const BusMethod& method, const BusConnection::Arguments& appendArguments) {
  sd_bus_message* created = nullptr;
  if (sd_bus_message_new_method_call(bus, &created, method.application.c_str(), method.path.c_str(),
                                     method.interface.c_str(), method.name.c_str()) < 0)
    return nullptr;
  Message call(created);
  return appendArguments(created) ? std::move(call) : nullptr;
}

// Owned by the library's slot for the reply. The library destroys a slot after its reply, or with the connection.
struct PendingCall {
  BusConnection::MessageHandler handler;  // empty once it was called
  const bool& isConnectionBroken;
};

int onSignal(sd_bus_message* message, void* handler, sd_bus_error*) noexcept {
  (*static_cast<BusConnection::MessageHandler*>(handler))(message);
  return 0;
}

int onReply(sd_bus_message* message, void* pendingCall, sd_bus_error*) noexcept {
  const bool isError = sd_bus_message_is_method_error(message, nullptr) > 0;
  std::exchange(static_cast<PendingCall*>(pendingCall)->handler, nullptr)(isError ? nullptr : message);
  return 0;
}

void destroyPendingCall(void* pendingCall) noexcept {
  const std::unique_ptr<PendingCall> call(static_cast<PendingCall*>(pendingCall));
  if (call->handler && call->isConnectionBroken) call->handler(nullptr);
}

// Returns false, and leaves `pending` alone, if the library does not take the call.
bool sendCall(sd_bus* bus, sd_bus_message* call, std::unique_ptr<PendingCall>& pending) {
  sd_bus_slot* slot = nullptr;
  if (sd_bus_call_async(bus, &slot, call, onReply, pending.get(), noTimeout) < 0) return false;
  sd_bus_slot_set_destroy_callback(slot, destroyPendingCall);
  static_cast<void>(pending.release());
  sd_bus_slot_set_floating(slot, 1);
  sd_bus_slot_unref(slot);
  return true;
}

}  // namespace

BusConnection::BusConnection(EventLoop& loop, MessageBus bus) : loop_(loop) {
  if (bus == MessageBus::session) {
    startSessionBus(bus_);
  } else {
    sd_bus* opened = nullptr;
    if (sd_bus_open_system(&opened) >= 0) bus_.reset(opened);
  }
  updateWatches();
}

void BusConnection::subscribe(const char* sender, const char* path, const char* interface, const char* signal,
                              MessageHandler handler) {
  if (!isOpen()) return;
  subscribers_.push_back(std::move(handler));
  sd_bus_match_signal_async(bus_.get(), nullptr, sender, path, interface, signal, onSignal, nullptr,
                            &subscribers_.back());
  updateWatches();
}

void BusConnection::call(const BusMethod& method, const Arguments& arguments, MessageHandler handler) {
  if (!isOpen()) return;
  auto pending = std::make_unique<PendingCall>(PendingCall{std::move(handler), isBroken_});
  const Message call = methodCall(bus_.get(), method, arguments);
  if (!call || !sendCall(bus_.get(), call.get(), pending)) pending->handler(nullptr);
  updateWatches();
}

void BusConnection::callBus(const char* method, const char* argument, MessageHandler handler) {
  const auto appendArgument = [argument](sd_bus_message* call) {
    return argument == nullptr || sd_bus_message_append(call, "s", argument) >= 0;
  };
  call({messageBusName, messageBusPath, messageBusName, method}, appendArgument, std::move(handler));
}

void BusConnection::send(const BusMethod& method, const Arguments& arguments) {
  if (!isOpen()) return;
  const Message call = methodCall(bus_.get(), method, arguments);
  if (!call) return;
  sd_bus_message_set_expect_reply(call.get(), 0);
  sd_bus_send(bus_.get(), call.get(), nullptr);
  updateWatches();
}

void BusConnection::serveUntil(const std::function<bool()>& done, std::chrono::microseconds timeout) {
  const Deadline deadline(timeout);
  for (serve(); isOpen() && !done(); serve()) {
    const std::uint64_t left = deadline.left();
    if (left == 0) return;
    const int waited = sd_bus_wait(bus_.get(), left);
    if (waited < 0 && waited != -EINTR) return;
  }
}

// Handles every received message and sends what can be sent without blocking.
void BusConnection::serve() noexcept {
  if (!isOpen()) return;
  int progress = 0;
  do {
    progress = sd_bus_process(bus_.get(), nullptr);
  } while (progress > 0);
  if (progress < 0) disconnect();
  updateWatches();
}

// Fails the pending calls.
void BusConnection::disconnect() {
  isBroken_ = true;
  bus_.reset();
}

// Watches the library's descriptor for the events that it wants now.
void BusConnection::updateWatches() {
  if (isOpen() && sd_bus_is_open(bus_.get()) <= 0) disconnect();  // a call has just found the bus gone
  const int descriptor = isOpen() ? std::max(sd_bus_get_fd(bus_.get()), -1) : -1;
  // While it connects, the library may try another address, and so open another descriptor.
  if (std::exchange(watchedDescriptor_, descriptor) != descriptor) {
    reader_ = descriptor < 0 ? nullptr : loop_.watch(descriptor, Readiness::readable, [this] { serve(); });
    writer_ = descriptor < 0 ? nullptr : loop_.watch(descriptor, Readiness::writable, [this] { serve(); });
  }
  if (descriptor < 0) return;
  const int events = std::max(sd_bus_get_events(bus_.get()), 0);
  reader_->setEnabled((events & POLLIN) != 0);
  writer_->setEnabled((events & POLLOUT) != 0);
}
