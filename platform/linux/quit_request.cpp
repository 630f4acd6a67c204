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

#include "platform/linux/object_path.h"
#include "platform/linux/session_bus.h"
#include "platform/posix/file_descriptor.h"

namespace {

constexpr std::string_view quitAction = "quit";
constexpr int answersInAPatience = 4;

// An object of an application, at one of its connections.
struct Addressee {
  const std::string& connection;
  const std::string& path;
};

enum class Outcome {
  answered,
  notUnderstood,  // there is no such connection, object, interface or method
  declined,       // with an error of the application's own
  unanswered,     // nothing came in time, or the connection ended without an answer
  undelivered,
};

struct Answer {
  Outcome outcome = Outcome::undelivered;
  Message message;  // if it answered
};

// What a connection makes of the request.
enum class Reaction {
  takesRequest,  // or will find it
  knowsNoSuchRequest,
  outOfReach,  // gone, or not to be spoken to
};

Outcome outcomeOfError(int problem, const sd_bus_error& error) {
  const auto isOneOf = [&](std::initializer_list<const char*> names) {
    return std::any_of(names.begin(), names.end(),
                       [&](const char* name) { return sd_bus_error_has_name(&error, name) > 0; });
  };
  if (isOneOf({SD_BUS_ERROR_UNKNOWN_METHOD, SD_BUS_ERROR_UNKNOWN_INTERFACE, SD_BUS_ERROR_UNKNOWN_OBJECT,
               SD_BUS_ERROR_SERVICE_UNKNOWN, SD_BUS_ERROR_NAME_HAS_NO_OWNER, SD_BUS_ERROR_NOT_SUPPORTED,
               SD_BUS_ERROR_INVALID_ARGS, SD_BUS_ERROR_INVALID_SIGNATURE}))
    return Outcome::notUnderstood;
  // The bus says these itself, or the library does.
  if (isOneOf({SD_BUS_ERROR_ACCESS_DENIED, SD_BUS_ERROR_LIMITS_EXCEEDED, SD_BUS_ERROR_NO_MEMORY}))
    return Outcome::undelivered;
  return problem == -ETIMEDOUT ? Outcome::unanswered : Outcome::declined;
}

Message makeCall(sd_bus* bus, const Addressee& to, const char* interface, const char* method) {
  sd_bus_message* call = nullptr;
  if (sd_bus_message_new_method_call(bus, &call, to.connection.c_str(), to.path.c_str(), interface, method) < 0)
    return nullptr;
  Message owner(call);
  return sd_bus_message_set_auto_start(call, 0) < 0 ? nullptr : std::move(owner);
}

// A request to activate the action, without a parameter and without anything about the screen.
Message makeActivation(sd_bus* bus, const Addressee& to) {
  Message call = makeCall(bus, to, "org.freedesktop.Application", "ActivateAction");
  if (!call || sd_bus_message_append(call.get(), "sava{sv}", quitAction.data(), 0U, 0U) < 0) return nullptr;
  return call;
}

Answer send(sd_bus* bus, const Message& call, std::uint64_t patience) {
  if (!call || patience == 0) return {};
  sd_bus_error error{};
  sd_bus_message* message = nullptr;
  const int result = sd_bus_call(bus, call.get(), patience, &error, &message);
  Answer answer;
  if (result >= 0)
    answer = {Outcome::answered, Message(message)};
  else if (sd_bus_is_ready(bus) > 0)
    answer.outcome = outcomeOfError(result, error);
  sd_bus_error_free(&error);
  return answer;
}

// Whether a list of strings holds the action; absent if it is no such list.
std::optional<bool> namesQuit(sd_bus_message* list) {
  if (sd_bus_message_enter_container(list, 'a', "s") <= 0) return std::nullopt;
  const char* action = nullptr;
  while (sd_bus_message_read_basic(list, 's', &action) > 0)
    if (action == quitAction) return true;
  return false;
}

// By number: the C library's header of these two does not say that they are C.
FileDescriptor openProcess(pid_t process) {
  return FileDescriptor(static_cast<int>(syscall(SYS_pidfd_open, process, 0)));
}

bool signalProcess(const FileDescriptor& process, int number) {
  return syscall(SYS_pidfd_send_signal, process.get(), number, nullptr, 0) == 0;
}

class QuitRequest {
 public:
  QuitRequest(const QuitAddressee& addressee, std::chrono::microseconds patience)
      : addressee_(addressee),
        path_(objectPath(addressee.identifier)),
        answerPatience_(static_cast<std::uint64_t>(patience.count()) / answersInAPatience),
        deadline_(patience),
        bus_(openSessionBus(deadline_)) {}

  bool deliver() {
    if (!bus_) return false;
    const std::string* withoutAction = nullptr;
    for (const std::string& connection : addressee_.connections) {
      const Reaction reaction = activate(connection);
      if (reaction == Reaction::takesRequest) return true;
      if (reaction == Reaction::knowsNoSuchRequest) withoutAction = &connection;
    }
    return withoutAction != nullptr && signal(*withoutAction);
  }

 private:
  // Whether the connection is there and has this process, as far as the bus has heard.
  bool isThere(const std::string& connection) {
    return processOf(bus_.get(), connection, deadline_) == addressee_.process;
  }

  std::uint64_t answerTime() const { return std::min(answerPatience_, deadline_.left()); }

  Reaction activate(const std::string& connection) {
    const Addressee to{connection, path_};
    if (!isThere(connection)) return Reaction::outOfReach;
    // GLib answers a request to activate an action that it does not have as if it had one.
    const Answer list = send(bus_.get(), makeCall(bus_.get(), to, "org.gtk.Actions", "List"), answerTime());
    if (list.outcome == Outcome::unanswered) return leave(to);
    if (list.outcome == Outcome::answered && namesQuit(list.message.get()) == false)
      return Reaction::knowsNoSuchRequest;
    switch (send(bus_.get(), makeActivation(bus_.get(), to), answerTime()).outcome) {
      case Outcome::answered:
      case Outcome::declined:
      case Outcome::unanswered: return Reaction::takesRequest;
      case Outcome::notUnderstood: return Reaction::knowsNoSuchRequest;
      case Outcome::undelivered: break;
    }
    return Reaction::outOfReach;
  }

  // Leaves the request with an application that does not answer now. The question after it tells that the bus has
  // taken the request, and that there is still somebody to find it.
  Reaction leave(const Addressee& to) {
    const Message call = makeActivation(bus_.get(), to);
    const bool sent = call && sd_bus_send(bus_.get(), call.get(), nullptr) >= 0;
    return sent && isThere(to.connection) ? Reaction::takesRequest : Reaction::outOfReach;
  }

  bool signal(const std::string& connection) {
    // The bus numbers a process that it cannot see 0, and to the system that would mean all of our own group.
    if (addressee_.process == 0 || addressee_.process > std::numeric_limits<pid_t>::max()) return false;
    const auto process = static_cast<pid_t>(addressee_.process);
    // Taken hold of before the bus is asked, so that what is signalled is what the bus then still knew.
    const FileDescriptor handle = openProcess(process);
    if (!handle.isOpen() && errno == ESRCH) return false;
    if (!isThere(connection)) return false;
    return handle.isOpen() ? signalProcess(handle, SIGTERM) : kill(process, SIGTERM) == 0;
  }

  const QuitAddressee& addressee_;
  std::string path_;
  std::uint64_t answerPatience_;
  Deadline deadline_;
  BusHandle bus_;
};

}  // namespace

bool requestQuit(const QuitAddressee& addressee, std::chrono::microseconds patience) {
  return QuitRequest(addressee, patience).deliver();
}
