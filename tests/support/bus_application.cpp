#include "tests/support/bus_application.h"

#include <gtest/gtest.h>
#include <poll.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <systemd/sd-bus.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstring>

namespace {

constexpr int longestWait = 30'000;  // milliseconds
constexpr const char* ownInterface = "org.example.Test";

// The pipe to which the application's process writes its notes.
int notebook = -1;

void note(const std::string& line) {
  const std::string text = line + "\n";
  if (write(notebook, text.data(), text.size()) != static_cast<ssize_t>(text.size())) _exit(1);
}

void noteSignal(int number) {
  const char* line = number == SIGTERM ? "SIGTERM\n" : "checked\n";
  const int kept = errno;
  if (write(notebook, line, std::strlen(line)) < 0) _exit(1);
  errno = kept;
}

// Handles this signal with all others blocked, so that notes do not mix.
void noteSignals(int number) {
  struct sigaction action {};
  action.sa_handler = noteSignal;
  sigfillset(&action.sa_mask);
  sigaction(number, &action, nullptr);
}

// What the application's process needs to serve its object.
struct Served {
  std::string path;
  Manners manners;
  std::vector<sd_bus*> connections;  // the last one is the application
};

[[noreturn]] void runOnWithoutBus() {
  for (;;) pause();
}

[[noreturn]] void leaveTheBus(const Served& served) {
  note("left the bus");  // before other processes can notice
  for (sd_bus* bus : served.connections) sd_bus_close(bus);
  runOnWithoutBus();
}

int answerList(sd_bus_message* call, const Served& served) {
  note("List");
  if (served.manners.leavesBusWhenAsked) leaveTheBus(served);
  sd_bus_message* answer = nullptr;
  if (sd_bus_message_new_method_return(call, &answer) < 0) _exit(1);
  std::vector<char*> names;
  for (const std::string& action : *served.manners.actions) names.push_back(const_cast<char*>(action.c_str()));
  names.push_back(nullptr);
  if (sd_bus_message_append_strv(answer, names.data()) < 0 || sd_bus_send(nullptr, answer, nullptr) < 0) _exit(1);
  sd_bus_message_unref(answer);
  return 1;
}

int answerActivation(sd_bus_message* call, const Served& served) {
  const char* action = nullptr;
  if (sd_bus_message_has_signature(call, "sava{sv}") <= 0 || sd_bus_message_read_basic(call, 's', &action) <= 0)
    return sd_bus_reply_method_errorf(call, SD_BUS_ERROR_INVALID_ARGS, "wrong argument types");
  note(std::string("activate ") + action);
  switch (*served.manners.onActivation) {
    case OnActivation::quitsWithoutAnswer: _exit(0);
    case OnActivation::stopsAnswering: return 1;
    case OnActivation::declines: return sd_bus_reply_method_errorf(call, "org.example.Error.Busy", "not now");
    case OnActivation::forbids: return sd_bus_reply_method_errorf(call, SD_BUS_ERROR_ACCESS_DENIED, "not you");
    case OnActivation::stays: return sd_bus_reply_method_return(call, nullptr);
    case OnActivation::quits: break;
  }
  sd_bus_reply_method_return(call, nullptr);
  sd_bus_flush(sd_bus_message_get_bus(call));
  _exit(0);
}

// Handles messages to the served object. The library answers the others with an error: no such object.
int answer(sd_bus_message* message, void* data, sd_bus_error*) {
  const Served& served = *static_cast<const Served*>(data);
  if (sd_bus_message_is_method_call(message, ownInterface, "LeaveBus") > 0) leaveTheBus(served);
  const char* path = sd_bus_message_get_path(message);
  if (path == nullptr || path != served.path) return 0;
  if (sd_bus_message_is_method_call(message, nullptr, nullptr) > 0 && sd_bus_message_get_auto_start(message) != 0)
    note("a call that could start an application");
  if (served.manners.actions && sd_bus_message_is_method_call(message, "org.gtk.Actions", "List") > 0)
    return answerList(message, served);
  if (served.manners.onActivation &&
      sd_bus_message_is_method_call(message, "org.freedesktop.Application", "ActivateAction") > 0)
    return answerActivation(message, served);
  return 0;
}

sd_bus* connectionOwning(const std::string& name) {
  sd_bus* bus = nullptr;
  if (sd_bus_open_user(&bus) < 0 || sd_bus_request_name(bus, name.c_str(), SD_BUS_NAME_QUEUE) < 0) _exit(1);
  return bus;
}

[[noreturn]] void serve(const Served& served) {
  std::vector<pollfd> ready;
  for (sd_bus* bus : served.connections) ready.push_back({sd_bus_get_fd(bus), POLLIN, 0});
  for (;;) {
    for (sd_bus* bus : served.connections) {
      int progress = 0;
      while ((progress = sd_bus_process(bus, nullptr)) > 0) continue;
      if (progress < 0) runOnWithoutBus();
    }
    poll(ready.data(), ready.size(), -1);
  }
}

[[noreturn]] void run(const std::string& name, Served served) {
  prctl(PR_SET_PDEATHSIG, SIGKILL);
  noteSignals(SIGRTMIN);
  if (served.manners.ignoresSignals) noteSignals(SIGTERM);
  for (int connection = 0; connection <= served.manners.plainConnections; ++connection)
    served.connections.push_back(connectionOwning(name));
  sd_bus* bus = served.connections.back();
  const char* connection = nullptr;
  if (sd_bus_add_filter(bus, nullptr, answer, &served) < 0 || sd_bus_get_unique_name(bus, &connection) < 0) _exit(1);
  note(connection);
  serve(served);
}

// Calls a method of a connection. Returns true if the reply is not an error.
bool call(const std::string& connection, const char* interface, const char* method) {
  sd_bus* bus = nullptr;
  if (sd_bus_open_user(&bus) < 0) return false;
  const int result = sd_bus_call_method(bus, connection.c_str(), "/", interface, method, nullptr, nullptr, nullptr);
  sd_bus_close_unref(bus);
  return result >= 0;
}

}  // namespace

BusApplication::BusApplication(const std::string& name, const std::string& path, const Manners& manners) {
  process_ = fork();
  if (process_ == 0) {
    notebook = notes_.writer();
    run(name, {path, manners, {}});
  }
  notes_.closeWriter();
  connection_ = nextNote().value_or("");
  EXPECT_NE(connection_, "") << "could not request the name";
}

BusApplication::~BusApplication() { remove(); }

std::optional<std::string> BusApplication::nextNote() {
  std::size_t end = 0;
  while ((end = unread_.find('\n')) == std::string::npos) {
    pollfd ready{notes_.reader(), POLLIN, 0};
    if (poll(&ready, 1, longestWait) <= 0) return std::nullopt;
    const std::string more = notes_.receive();
    if (more.empty()) return std::nullopt;
    unread_ += more;
  }
  std::string line = unread_.substr(0, end);
  unread_.erase(0, end + 1);
  return line;
}

std::string BusApplication::notes() {
  if (process_ > 0) kill(process_, SIGRTMIN);
  std::string all;
  for (std::optional<std::string> line; (line = nextNote()) && line != "checked";)
    all += all.empty() ? *line : ", " + *line;
  return all;
}

bool BusApplication::isAnswering() const { return call(connection_, "org.freedesktop.DBus.Peer", "Ping"); }

void BusApplication::leaveBus() {
  EXPECT_FALSE(call(connection_, ownInterface, "LeaveBus"));
  EXPECT_EQ(notes(), "left the bus");
}

void BusApplication::suspend() const {
  kill(process_, SIGSTOP);
  waitpid(process_, nullptr, WUNTRACED);
}

void BusApplication::resume() const { kill(process_, SIGCONT); }

std::string BusApplication::ending() {
  // The writing end of the pipe closes only when the process ends.
  std::string kept;
  while (const std::optional<std::string> line = nextNote()) kept += *line + "\n";
  unread_ = kept + unread_;
  pollfd ready{notes_.reader(), POLLIN, 0};
  if (poll(&ready, 1, 0) <= 0 || (ready.revents & POLLHUP) == 0) return "still running";
  int status = 0;
  waitpid(process_, &status, 0);
  process_ = 0;
  if (WIFSIGNALED(status)) return WTERMSIG(status) == SIGTERM ? "SIGTERM" : "another signal";
  return WEXITSTATUS(status) == 0 ? "quit" : "failure";
}

void BusApplication::remove() {
  if (process_ <= 0) return;
  kill(process_, SIGKILL);
  waitpid(process_, nullptr, 0);
  process_ = 0;
}
