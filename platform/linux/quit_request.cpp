#include "platform/linux/quit_request.h"

#include <sys/syscall.h>
#include <systemd/sd-bus.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <initializer_list>
#include <limits>
#include <optional>
#include <string_view>
#include <utility>

#include "platform/error.h"
#include "platform/linux/object_path.h"
#include "platform/linux/session_bus.h"
#include "platform/posix/file_descriptor.h"

namespace {

constexpr std::string_view quitAction = "quit";
constexpr int repliesInATimeout = 4;

// An application's object on one of its connections.
struct BusObject {
  const std::string& connection;
  const std::string& path;
};

enum class Outcome {
  replied,
  unknownMethod,  // or connection, object or interface
  failed,         // the application itself replied with an error
  noReply,        // within the timeout, or before the connection ended
  undelivered,
};

struct Reply {
  Outcome outcome = Outcome::undelivered;
  Message message;  // null unless `outcome` is `replied`
};

// The effect of the request on one connection.
enum class Reaction {
  accepted,  // handled, or queued for the application
  unsupported,
  unreachable,  // the connection has ended, or the bus denies permission
};

Outcome outcomeOfError(int problem, const sd_bus_error& error) {
  const auto isOneOf = [&](std::initializer_list<const char*> names) {
    return std::any_of(names.begin(), names.end(),
                       [&](const char* name) { return sd_bus_error_has_name(&error, name) > 0; });
  };
  if (isOneOf({SD_BUS_ERROR_UNKNOWN_METHOD, SD_BUS_ERROR_UNKNOWN_INTERFACE, SD_BUS_ERROR_UNKNOWN_OBJECT,
               SD_BUS_ERROR_SERVICE_UNKNOWN, SD_BUS_ERROR_NAME_HAS_NO_OWNER, SD_BUS_ERROR_NOT_SUPPORTED,
               SD_BUS_ERROR_INVALID_ARGS, SD_BUS_ERROR_INVALID_SIGNATURE}))
    return Outcome::unknownMethod;
  // These errors come from the bus or the library, not from the application.
  if (isOneOf({SD_BUS_ERROR_ACCESS_DENIED, SD_BUS_ERROR_LIMITS_EXCEEDED, SD_BUS_ERROR_NO_MEMORY}))
    return Outcome::undelivered;
  return problem == -ETIMEDOUT ? Outcome::noReply : Outcome::failed;
}

Message makeCall(sd_bus* bus, const BusObject& object, const char* interface, const char* method) {
  sd_bus_message* call = nullptr;
  if (sd_bus_message_new_method_call(bus, &call, object.connection.c_str(), object.path.c_str(), interface, method) < 0)
    return nullptr;
  Message owner(call);
  return sd_bus_message_set_auto_start(call, 0) < 0 ? nullptr : std::move(owner);
}

// The activation has no parameter and no platform data.
Message makeActivation(sd_bus* bus, const BusObject& object) {
  Message call = makeCall(bus, object, "org.freedesktop.Application", "ActivateAction");
  if (!call || sd_bus_message_append(call.get(), "sava{sv}", quitAction.data(), 0U, 0U) < 0) return nullptr;
  return call;
}

// Waits up to `timeout` microseconds for the reply.
Reply send(sd_bus* bus, const Message& call, std::uint64_t timeout) {
  if (!call || timeout == 0) return {};
  sd_bus_error error{};
  sd_bus_message* message = nullptr;
  const int result = sd_bus_call(bus, call.get(), timeout, &error, &message);
  Reply reply;
  if (result >= 0)
    reply = {Outcome::replied, Message(message)};
  else if (sd_bus_is_ready(bus) > 0)
    reply.outcome = outcomeOfError(result, error);
  sd_bus_error_free(&error);
  return reply;
}

// Returns true if a list of strings contains the action; absent if the message is no such list.
std::optional<bool> listsQuit(sd_bus_message* list) {
  if (sd_bus_message_enter_container(list, 'a', "s") <= 0) return std::nullopt;
  const char* action = nullptr;
  while (sd_bus_message_read_basic(list, 's', &action) > 0)
    if (action == quitAction) return true;
  return false;
}

// By number, because glibc's header does not declare these two with C linkage.
FileDescriptor openProcess(pid_t process) {
  return FileDescriptor(static_cast<int>(syscall(SYS_pidfd_open, process, 0)));
}

bool signalProcess(const FileDescriptor& process, int number) {
  return syscall(SYS_pidfd_send_signal, process.get(), number, nullptr, 0) == 0;
}

class QuitRequest {
 public:
  QuitRequest(const QuitTarget& target, std::chrono::microseconds timeout)
      : target_(target),
        path_(objectPath(target.identifier)),
        replyTimeout_(static_cast<std::uint64_t>(timeout.count()) / repliesInATimeout),
        deadline_(timeout),
        bus_(openSessionBus(deadline_)) {}

  bool deliver() {
    if (!bus_) return false;
    const std::string* unsupported = nullptr;
    for (const std::string& connection : target_.connections) {
      const Reaction reaction = activate(connection);
      if (reaction == Reaction::accepted) return true;
      if (reaction == Reaction::unsupported) unsupported = &connection;
    }
    return unsupported != nullptr && signal(*unsupported);
  }

 private:
  // Returns true if the bus has the connection and reports the target's process ID for it.
  bool isConnected(const std::string& connection) {
    return processOf(bus_.get(), connection, deadline_) == target_.process;
  }

  std::uint64_t timeForReply() const { return std::min(replyTimeout_, deadline_.left()); }

  Reaction activate(const std::string& connection) {
    const BusObject object{connection, path_};
    if (!isConnected(connection)) return Reaction::unreachable;
    // GLib replies to the activation of an action that does not exist as if it had succeeded, so look for it first.
    const Reply list = send(bus_.get(), makeCall(bus_.get(), object, "org.gtk.Actions", "List"), timeForReply());
    if (list.outcome == Outcome::noReply) return queueActivation(object);
    if (list.outcome == Outcome::replied && listsQuit(list.message.get()) == false) return Reaction::unsupported;
    switch (send(bus_.get(), makeActivation(bus_.get(), object), timeForReply()).outcome) {
      case Outcome::replied:
      case Outcome::failed:
      case Outcome::noReply: return Reaction::accepted;
      case Outcome::unknownMethod: return Reaction::unsupported;
      case Outcome::undelivered: break;
    }
    return Reaction::unreachable;
  }

  // Queues the request for an unresponsive application. The call to the bus after it confirms that the bus has taken
  // the request and that the connection still exists.
  Reaction queueActivation(const BusObject& object) {
    const Message call = makeActivation(bus_.get(), object);
    const bool sent = call && sd_bus_send(bus_.get(), call.get(), nullptr) >= 0;
    return sent && isConnected(object.connection) ? Reaction::accepted : Reaction::unreachable;
  }

  bool signal(const std::string& connection) {
    // The bus reports ID 0 for a process that it cannot see. kill(0) would signal our own process group.
    if (target_.process == 0 || target_.process > std::numeric_limits<pid_t>::max()) return false;
    const auto process = static_cast<pid_t>(target_.process);
    // Opened before the bus confirms the connection, so that a reused process ID cannot be signalled.
    const FileDescriptor handle = openProcess(process);
    if (!handle.isOpen() && errno == ESRCH) return false;
    if (!isConnected(connection)) return false;
    return handle.isOpen() ? signalProcess(handle, SIGTERM) : kill(process, SIGTERM) == 0;
  }

  const QuitTarget& target_;
  std::string path_;
  std::uint64_t replyTimeout_;  // in microseconds
  Deadline deadline_;
  BusHandle bus_;
};

}  // namespace

bool requestQuit(const QuitTarget& target, std::chrono::microseconds timeout) {
  try {
    return QuitRequest(target, timeout).deliver();
  } catch (const Error&) {
    return false;  // the bus does not reply
  }
}
