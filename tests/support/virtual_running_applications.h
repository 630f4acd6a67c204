// The running applications of a virtual machine.
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

// How a process reacts to a quit request.
struct QuitBehavior {
  bool isRefused = false;                                                                // terminate() returns false
  std::optional<VirtualMainLoop::Duration> quitsAfter = std::chrono::milliseconds(600);  // absent: stays open
  std::optional<VirtualMainLoop::Duration> restartsAfter = std::nullopt;  // restarts this long after it quit
};

// Records each query as "running?" with the bundle identifier, and each quit request as "quit" with the process
// identifier. Processes quit and restart as the machine's time advances. Nothing can force one to quit.
class VirtualRunningApplications : public RunningApplications {
 public:
  // Called with each process when it ends.
  using Terminated = std::function<void(const std::shared_ptr<RunningApplication>& application)>;

  VirtualRunningApplications(Journal& journal, VirtualMainLoop& loop) : journal_(journal), loop_(loop) {}

  std::vector<std::shared_ptr<RunningApplication>> withBundleIdentifier(const std::string& identifier) override;
  // Not recorded.
  bool areKnown() override { return areKnown_; }

  // From now on, nobody knows which applications run. The processes must not be started or ended meanwhile.
  void leaveSession() { areKnown_ = false; }
  // While true, every query throws Error.
  void setUnresponsive(bool isUnresponsive) { isUnresponsive_ = isUnresponsive; }
  bool isUnresponsive() const { return isUnresponsive_; }

  // Starts one more process of an application. Returns its process identifier.
  int start(const std::string& identifier, const QuitBehavior& behavior = {});
  // The same with this process identifier.
  void startAs(int process, const std::string& identifier, const QuitBehavior& behavior = {});
  // Ends all processes of an application, or one process, as their user would.
  void end(const std::string& identifier);
  void endProcess(int process);
  // How many processes of an application are running. Not recorded.
  int count(const std::string& identifier) const;
  // The running processes, in the order in which they started. Not recorded.
  struct Process {
    int number;
    QuitBehavior behavior;
  };
  std::vector<Process> processes() const;

  void whenTerminated(Terminated terminated) { terminated_ = std::move(terminated); }

 private:
  class VirtualProcess;

  bool quit(int process);

  Journal& journal_;
  VirtualMainLoop& loop_;
  std::vector<std::shared_ptr<VirtualProcess>> processes_;
  Terminated terminated_;
  int nextProcess_ = 501;
  bool areKnown_ = true;
  bool isUnresponsive_ = false;
};
