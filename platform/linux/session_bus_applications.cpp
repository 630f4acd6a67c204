#include "platform/linux/session_bus_applications.h"

#include <signal.h>
#include <systemd/sd-bus.h>

#include <algorithm>
#include <cstdint>
#include <optional>
#include <utility>

namespace {

constexpr const char* busName = "org.freedesktop.DBus";
constexpr const char* busPath = "/org/freedesktop/DBus";
constexpr int connectionsTried = 2;  // one that broke since the last question, and a fresh one

class Deadline {
 public:
  explicit Deadline(std::chrono::microseconds patience) : end_(std::chrono::steady_clock::now() + patience) {}

  // What is left in microseconds, 0 if it has passed.
  std::uint64_t left() const {
    const auto left = std::chrono::ceil<std::chrono::microseconds>(end_ - std::chrono::steady_clock::now());
    return left.count() > 0 ? static_cast<std::uint64_t>(left.count()) : 0;
  }

 private:
  std::chrono::steady_clock::time_point end_;
};

struct MessageRelease {
  void operator()(sd_bus_message* message) const { sd_bus_message_unref(message); }
};
using Message = std::unique_ptr<sd_bus_message, MessageRelease>;

class RunningProcess : public RunningApplication {
 public:
  RunningProcess(std::uint32_t identifier, std::string name) : identifier_(identifier), name_(std::move(name)) {}
  int processIdentifier() const override { return static_cast<int>(identifier_); }
  std::optional<std::string> bundleIdentifier() const override { return name_; }
  bool terminate() override { return kill(static_cast<pid_t>(identifier_), SIGTERM) == 0; }

 private:
  std::uint32_t identifier_;
  std::string name_;
};

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
  if (sd_bus_message_new_method_call(bus, &call, busName, busPath, busName, question) < 0) return nullptr;
  const Message owner(call);
  const std::uint64_t left = deadline.left();
  if (left == 0 || sd_bus_message_append(call, "s", name.c_str()) < 0) return nullptr;
  sd_bus_message* answer = nullptr;
  return Message(sd_bus_call(bus, call, left, nullptr, &answer) < 0 ? nullptr : answer);
}

// The connections that own a name or wait for it, by their unique names.
std::vector<std::string> owners(sd_bus* bus, const std::string& name, const Deadline& deadline) {
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

std::vector<std::shared_ptr<RunningApplication>> processesOwning(sd_bus* bus, const std::string& name,
                                                                 const Deadline& deadline) {
  std::vector<std::uint32_t> processes;
  for (const std::string& connection : owners(bus, name, deadline)) {
    const std::optional<std::uint32_t> process = processOf(bus, connection, deadline);
    if (process && std::find(processes.begin(), processes.end(), *process) == processes.end())
      processes.push_back(*process);
  }
  std::vector<std::shared_ptr<RunningApplication>> applications;
  applications.reserve(processes.size());
  for (const std::uint32_t process : processes) applications.push_back(std::make_shared<RunningProcess>(process, name));
  return applications;
}

}  // namespace

void SessionBusApplications::Closer::operator()(sd_bus* bus) const { sd_bus_close_unref(bus); }

std::vector<std::shared_ptr<RunningApplication>> SessionBusApplications::withBundleIdentifier(
    const std::string& identifier) {
  const Deadline deadline(patience_);
  for (int connection = 0; connection < connectionsTried; ++connection) {
    if (sd_bus_is_ready(bus_.get()) <= 0) {
      sd_bus* bus = nullptr;
      if (sd_bus_open_user(&bus) < 0) return {};
      bus_.reset(bus);
      if (!becomesReady(bus, deadline)) {
        bus_.reset();
        return {};
      }
    }
    auto applications = processesOwning(bus_.get(), identifier, deadline);
    if (sd_bus_is_ready(bus_.get()) > 0) return applications;
  }
  return {};
}
