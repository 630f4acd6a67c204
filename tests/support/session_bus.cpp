#include "tests/support/session_bus.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <systemd/sd-bus.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <filesystem>

Pipe::Pipe() { EXPECT_EQ(pipe2(ends_.data(), O_CLOEXEC), 0); }

Pipe::~Pipe() {
  closeReader();
  closeWriter();
}

std::string Pipe::receive() const {
  std::array<char, 512> text{};
  const ssize_t count = read(reader(), text.data(), text.size());
  return {text.data(), static_cast<std::size_t>(std::max<ssize_t>(count, 0))};
}

void Pipe::closeEnd(std::size_t end) {
  if (ends_[end] >= 0) close(ends_[end]);
  ends_[end] = -1;
}

SessionBus::SessionBus(const ScratchFolder& scratch)
    : started_(scratch.path("started")), address_("unix:path=" + scratch.path("bus")) {
  makeFile(scratch.path("safari.service"),
           "[D-BUS Service]\nName=com.apple.Safari\nExec=/bin/sh -c \"touch " + started_ + "; exit 1\"\n");
  makeFile(scratch.path("bus.conf"),
           "<!DOCTYPE busconfig PUBLIC \"-//freedesktop//DTD D-Bus Bus Configuration 1.0//EN\" "
           "\"http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd\">\n"
           "<busconfig><type>session</type><listen>unix:path=" +
               scratch.path("bus") + "</listen><auth>EXTERNAL</auth><servicedir>" + scratch.path() +
               "</servicedir><policy context=\"default\"><allow send_destination=\"*\" eavesdrop=\"true\"/>"
               "<allow eavesdrop=\"true\"/><allow own=\"*\"/><allow user=\"*\"/></policy></busconfig>\n");
  const std::string configuration = "--config-file=" + scratch.path("bus.conf");
  const std::string log = scratch.path("bus.log");
  Pipe ready;
  process_ = fork();
  if (process_ == 0) {
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    dup2(ready.writer(), STDOUT_FILENO);
    dup2(open(log.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600), STDERR_FILENO);
    execlp("dbus-daemon", "dbus-daemon", configuration.c_str(), "--nofork", "--nopidfile", "--print-address=1",
           nullptr);
    _exit(127);
  }
  ready.closeWriter();
  EXPECT_FALSE(ready.receive().empty()) << contentOf(log);  // it prints its address once it listens
}

void SessionBus::stop() {
  if (process_ <= 0) return;
  kill(process_, SIGKILL);
  waitpid(process_, nullptr, 0);
  process_ = 0;
}

std::optional<bool> SessionBus::hasStartedSomething() const {
  const std::string id = std::to_string(process_);
  const std::string list = "/proc/" + id + "/task/" + id + "/children";
  if (!std::filesystem::exists(list)) return std::nullopt;
  return !contentOf(list).empty() || std::filesystem::exists(started_);
}

NameOwner::NameOwner(const char* name, int connections) {
  Pipe ready;
  process_ = fork();
  if (process_ == 0) {
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    for (int connection = 0; connection < connections; ++connection) {
      sd_bus* bus = nullptr;
      if (sd_bus_open_user(&bus) < 0 || sd_bus_request_name(bus, name, SD_BUS_NAME_QUEUE) < 0) _exit(1);
    }
    if (write(ready.writer(), "r", 1) != 1) _exit(1);
    for (;;) pause();
  }
  ready.closeWriter();
  EXPECT_EQ(ready.receive(), "r") << "could not request the name";
}

void NameOwner::leave() {
  if (process_ <= 0) return;
  kill(process_, SIGKILL);
  waitpid(process_, nullptr, 0);
  process_ = 0;
}
