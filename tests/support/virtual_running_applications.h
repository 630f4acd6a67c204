// The applications that run on a virtual machine.
#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/running_applications.h"
#include "tests/support/journal.h"
#include "tests/support/virtual_main_loop.h"

// What a process does when it is asked to quit.
struct QuitBehavior {
  bool isRefused = false;  // the request does not even reach it
  std::optional<VirtualMainLoop::Duration> quitsAfter = std::chrono::milliseconds(600);  // absent: asks its user, stays
  std::optional<VirtualMainLoop::Duration> returnsAfter = std::nullopt;  // once it has quit, it is started again
};

// Each question is noted as "running?" with the bundle identifier, each request as "quit" with the process identifier.
// They happen to quit, and to be started again, in the time of the machine. There is nothing here that forces one.
class VirtualRunningApplications : public RunningApplications {
 public:
  // `terminated` is told of each process that has ended, in the moment of its end.
  using Terminated = std::function<void(const std::shared_ptr<RunningApplication>& application)>;

  VirtualRunningApplications(Journal& journal, VirtualMainLoop& loop) : journal_(journal), loop_(loop) {}

  std::vector<std::shared_ptr<RunningApplication>> withBundleIdentifier(const std::string& identifier) override;

  // Starts one more process of an application; answers its process identifier.
  int start(const std::string& identifier, const QuitBehavior& behavior = {});
  // The same for a process whose identifier is known.
  void startAs(int process, const std::string& identifier, const QuitBehavior& behavior = {});
  // Ends all of an application's processes, as their user would; and one process.
  void end(const std::string& identifier);
  void endProcess(int process);
  // How many processes of an application are running; nothing is noted.
  int count(const std::string& identifier) const;

  void whenTerminated(Terminated terminated) { terminated_ = std::move(terminated); }

 private:
  class VirtualProcess;

  bool quit(int process);

  Journal& journal_;
  VirtualMainLoop& loop_;
  std::vector<std::shared_ptr<VirtualProcess>> processes_;
  Terminated terminated_;
  int nextProcess_ = 501;
};
