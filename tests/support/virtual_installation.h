// The bundle, the processes and the calendars of a virtual machine.
#pragma once

#include <chrono>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "platform/bundle.h"
#include "platform/processes.h"
#include "tests/support/journal.h"
#include "tests/support/native_parts.h"
#include "tests/support/virtual_main_loop.h"

// Records path() as "bundle path".
class VirtualBundle : public Bundle {
 public:
  explicit VirtualBundle(Journal& journal) : journal_(journal) {}

  std::string path() override;
  std::string executablePath() override { return path_ + "/Contents/MacOS/quillery"; }
  bool isInstalled() override { return isInstalled_; }
  std::string iconPath() override { return path_ + "/Contents/Resources/AppIcon.icns"; }
  std::optional<std::string> information(const std::string& key) override;

  void moveTo(const std::string& path) { path_ = path; }
  void runWhereItWasBuilt() { isInstalled_ = false; }
  void forgetInformation() { information_.clear(); }

 private:
  Journal& journal_;
  std::string path_ = "/Applications/Quillery.app";
  bool isInstalled_ = true;
  std::map<std::string, std::string> information_ = {{"CFBundleShortVersionString", "1.2.3"},
                                                     {"CFBundleVersion", "45"}};
};

// Records "uuid", "run" with the path and the arguments, and "pause" with the time. UUIDs count up and are the same on
// every machine. Has a launchd with room for one job, to which the programs bootstrap, bootout and print refer.
class VirtualProcesses : public Processes {
 public:
  VirtualProcesses(Journal& journal, VirtualMainLoop& loop) : journal_(journal), loop_(loop) {}

  std::string randomUuid() override;
  int processIdentifier() override { return 500; }
  unsigned userIdentifier() override { return 501; }
  bool writesToTerminal() override { return writesToTerminal_; }
  std::optional<std::string> environmentVariable(const std::string& name) override;
  std::string workingFolder() override { return "/home/user/folder"; }
  int run(const std::string& path, const std::vector<std::string>& arguments) override;
  void pause(std::chrono::milliseconds duration) override;

  void startInTerminal() { writesToTerminal_ = true; }
  void setVariable(const std::string& name, const std::string& value) { environment_[name] = value; }

  // Sets the exit status of programs whose first argument is `subcommand`, which then have no effect. Without it, they
  // end with 0, or with launchctl's status if the job is not loaded.
  void willAnswer(const std::string& subcommand, int status) { statuses_[subcommand] = status; }
  // The same for the next `times` programs only.
  void willAnswerNext(const std::string& subcommand, int status, int times) {
    nextStatuses_[subcommand] = {status, times};
  }

  // The `number`-th UUID, counted from 1.
  static std::string uuid(int number);

 private:
  int statusOf(const std::string& subcommand);

  Journal& journal_;
  VirtualMainLoop& loop_;
  int given_ = 0;
  bool isJobLoaded_ = false;
  std::map<std::string, int> statuses_;
  std::map<std::string, std::pair<int, int>> nextStatuses_;  // a status, and how many programs will end with it
  bool writesToTerminal_ = false;
  std::map<std::string, std::string> environment_;
};

// The native calendars, with a current time zone that does not depend on the system's.
class VirtualCalendars : public Calendars {
 public:
  std::shared_ptr<const Calendar> current() override { return inTimeZone(zone_); }
  std::shared_ptr<const Calendar> inTimeZone(const std::string& name) override { return calendars_.inTimeZone(name); }
  void moveTo(const std::string& zone) { zone_ = zone; }

 private:
  NativeCalendars calendars_;
  std::string zone_ = "UTC";
};
