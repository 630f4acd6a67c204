#include "app/entry.h"

#include <algorithm>
#include <string>

#include "app/alert.h"
#include "app/self_test.h"
#include "platform/product.h"

Application* app = nullptr;
// NOLINTNEXTLINE(cert-err58-cpp): without memory the program cannot start
std::shared_ptr<SorterDelegate>& delegate = *new std::shared_ptr<SorterDelegate>();

namespace {

// False if that is unknown: a second instance does less harm than none.
bool anotherInstanceRuns() try {
  const int own = platform().processes.processIdentifier();
  const auto instances = platform().runningApplications.withBundleIdentifier(std::string(product::bundleIdentifier));
  return std::ranges::any_of(instances, [&](const auto& instance) { return instance->processIdentifier() != own; });
} catch (const Error&) {
  return false;
}

}  // namespace

int runQuillery(const Arguments& arguments, const Platform& (*withDesktop)()) {
  automatic = false;
  if (contains(arguments, "--self-test")) {
    runSelfTest();
    return 0;
  }
  if (contains(arguments, "--login") && anotherInstanceRuns()) return 0;
  const PlatformScope scope(withDesktop());
  app = &desktop().application;
  delegate = std::make_shared<SorterDelegate>();
  app->setDelegate(delegate);
  platform().userInterface.becomeAccessory();
  app->run();
  delegate = nullptr;
  app = nullptr;
  return 0;
}
