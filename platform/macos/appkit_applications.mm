#include "platform/macos/appkit_applications.h"

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

}  // namespace

std::vector<std::shared_ptr<RunningApplication>> AppKitApplications::withBundleIdentifier(
    const std::string& identifier) {
  std::vector<std::shared_ptr<RunningApplication>> applications;
  for (NSRunningApplication* application in
       [NSRunningApplication runningApplicationsWithBundleIdentifier:stringOf(identifier)])
    applications.push_back(runningApplicationOf(application));
  return applications;
}

std::shared_ptr<RunningApplication> runningApplicationOf(NSRunningApplication* application) {
  return std::make_shared<AppKitRunningApplication>(application);
}
