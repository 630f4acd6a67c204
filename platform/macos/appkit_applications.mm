#include "platform/macos/appkit_applications.h"

#include <libproc.h>
#include <unistd.h>

#include <algorithm>
#include <string_view>

#include "platform/macos/conversions.h"

namespace {

class AppKitRunningApplication : public RunningApplication {
 public:
  explicit AppKitRunningApplication(NSRunningApplication* application) : application_(application) {}

  int processIdentifier() const override { return application_.processIdentifier; }

  std::optional<std::string> bundleIdentifier() const override {
    NSString* const identifier = application_.bundleIdentifier;
    return identifier != nil ? std::optional(textOf(identifier)) : std::nullopt;
  }

  bool terminate() override { return [application_ terminate]; }

 private:
  NSRunningApplication* application_;
};

// A process of an application that Launch Services does not know, such as one that has just been started. It cannot be
// asked to quit yet.
class UnregisteredApplication : public RunningApplication {
 public:
  UnregisteredApplication(pid_t process, std::string identifier)
      : process_(process), identifier_(std::move(identifier)) {}
  int processIdentifier() const override { return process_; }
  std::optional<std::string> bundleIdentifier() const override { return identifier_; }
  bool terminate() override { return false; }

 private:
  pid_t process_;
  std::string identifier_;
};

// The processes of this user.
std::vector<pid_t> ownProcesses() {
  const auto listed = [](pid_t* processes, std::size_t size) {
    return std::max(proc_listpids(PROC_RUID_ONLY, getuid(), processes, static_cast<int>(size)), 0);
  };
  constexpr std::size_t more = 64;  // processes that start meanwhile
  std::vector<pid_t> processes(static_cast<std::size_t>(listed(nullptr, 0)) / sizeof(pid_t) + more);
  processes.resize(static_cast<std::size_t>(listed(processes.data(), processes.size() * sizeof(pid_t))) /
                   sizeof(pid_t));
  return processes;
}

// Returns the path of a process's executable; empty if the process has ended.
std::string executableOf(pid_t process) {
  std::string path(PROC_PIDPATHINFO_MAXSIZE, '\0');
  path.resize(static_cast<std::size_t>(std::max(proc_pidpath(process, path.data(), PROC_PIDPATHINFO_MAXSIZE), 0)));
  return path;
}

// Returns true if the path is that of the main executable in a bundle with this identifier.
bool isMainExecutable(const std::string& path, NSString* identifier) {
  constexpr std::string_view folder = "/Contents/MacOS/";
  const std::size_t place = path.rfind(folder);
  if (place == std::string::npos) return false;
  NSBundle* const bundle = [NSBundle bundleWithPath:stringOf(path.substr(0, place))];
  if (![bundle.bundleIdentifier isEqualToString:identifier]) return false;
  NSString* const executable = bundle.executableURL.path;
  return executable != nil && textOf(executable).ends_with(path.substr(place));
}

std::vector<std::shared_ptr<RunningApplication>> knownToLaunchServices(const std::string& identifier) {
  std::vector<std::shared_ptr<RunningApplication>> applications;
  for (NSRunningApplication* application in
       [NSRunningApplication runningApplicationsWithBundleIdentifier:stringOf(identifier)])
    applications.push_back(runningApplicationOf(application));
  return applications;
}

std::vector<std::shared_ptr<RunningApplication>> knownToTheKernel(const std::string& identifier) {
  std::vector<std::shared_ptr<RunningApplication>> applications;
  for (const pid_t process : ownProcesses()) {
    if (!isMainExecutable(executableOf(process), stringOf(identifier))) continue;
    NSRunningApplication* const registered = [NSRunningApplication runningApplicationWithProcessIdentifier:process];
    if (registered != nil)
      applications.push_back(runningApplicationOf(registered));
    else
      applications.push_back(std::make_shared<UnregisteredApplication>(process, identifier));
  }
  return applications;
}

}  // namespace

// What AppKit reports changes only when the main run loop runs in a common mode. So an application that was started
// during a sort would not be seen before the sort ends, and by a program without a run loop never. The kernel's list of
// processes is always current.
std::vector<std::shared_ptr<RunningApplication>> AppKitApplications::withBundleIdentifier(
    const std::string& identifier) {
  @autoreleasepool {
    auto applications = knownToLaunchServices(identifier);
    return applications.empty() ? knownToTheKernel(identifier) : applications;
  }
}

std::shared_ptr<RunningApplication> runningApplicationOf(NSRunningApplication* application) {
  return std::make_shared<AppKitRunningApplication>(application);
}
